#include "components/controls/picture.h"
#include "platform/runtime_error.h"
#include "tests/support/application.h"
#include "tests/support/temporary_folder.h"

#include <QApplication>
#include <QImage>
#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace {

constexpr QSize kRoom(360, 120);

struct PictureCase {
    const char* name;
    QSize size;
    qreal dotsPerUnit;
    QSizeF shown;
    QSize dots;
};

void PrintTo(const PictureCase& test, std::ostream* stream) {
    *stream << test.name;
}

class Picture : public testing::TestWithParam<PictureCase> {
  protected:
    QApplication& application_ = support::application();
    const support::TemporaryFolder folder_;
};

TEST_P(Picture, FitsTheRoomAndHasTheDotsThatTheScreenCanShow) {
    const PictureCase& test = GetParam();
    QImage image(test.size, QImage::Format_RGB32);
    image.fill(Qt::blue);
    ASSERT_TRUE(image.save(folder_.qtPath("logo.jpg")));
    const QPixmap loaded = controls::LoadPicture(folder_.qtPath("logo.jpg"), kRoom, test.dotsPerUnit);
    EXPECT_EQ(loaded.deviceIndependentSize(), test.shown);
    EXPECT_EQ(loaded.size(), test.dots);
}

INSTANTIATE_TEST_SUITE_P(
    Logo, Picture,
    testing::Values(PictureCase{"ThatFitsStays", {360, 120}, 1, {360, 120}, {360, 120}},
                    PictureCase{"ThatFitsStaysOnASharpScreen", {360, 120}, 2, {360, 120}, {360, 120}},
                    PictureCase{"OfOneDotStays", {1, 1}, 2, {1, 1}, {1, 1}},
                    PictureCase{"TwiceAsLarge", {720, 240}, 1, {360, 120}, {360, 120}},
                    PictureCase{"TwiceAsLargeOnASharpScreen", {720, 240}, 2, {360, 120}, {720, 240}},
                    PictureCase{"ALittleLargerOnASharpScreen", {540, 180}, 2, {360, 120}, {540, 180}},
                    PictureCase{"Tall", {200, 1200}, 1, {20, 120}, {20, 120}},
                    PictureCase{"OfAThinLine", {8000, 1}, 1, {360, 1}, {360, 1}},
                    PictureCase{"Enormous", {10'000, 10'000}, 2, {120, 120}, {240, 240}}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(Picture, ThatIsNoneIsRefused) {
    folder_.write("logo.jpg", "\xFF\xD8\xFF\xE0 no picture behind the start of one");
    EXPECT_EQ(platform::errorNumberOf([&] { controls::LoadPicture(folder_.qtPath("logo.jpg"), kRoom, 2); }),
              platform::errors::InvalidPicture);
}

} // namespace
