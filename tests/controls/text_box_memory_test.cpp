// How much memory it takes to show a text. Each test runs in a process of its own.

#include "components/controls/text_box.h"
#include "tests/support/application.h"
#include "tests/support/sanitizer.h"

#include <QLabel>
#include <QTest>
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <sys/resource.h>

using controls::TextBox;

namespace {
constexpr std::size_t kLongText = 25'000'000; // bytes

/** A number of /proc/self/status, in bytes. */
std::size_t memory(const std::string& key) {
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word) {
        if (word == key + ':') {
            std::size_t kilobytes = 0;
            status >> kilobytes;
            return kilobytes * 1'024;
        }
    }
    return 0;
}

class TextBoxMemory : public testing::Test {
  protected:
    void SetUp() override {
        if (support::kSanitized) {
            GTEST_SKIP() << "a sanitizer's memory is not the program's";
        }
        // What a box takes for any text is allocated before the measurement.
        box.resize(600, 400);
        box.show();
        show("text\n");
    }

    void show(const std::string& text) {
        box.setBytes(text);
        ASSERT_TRUE(QTest::qWaitFor([this] { return !box.isFilling(); }, 60'000));
        QCoreApplication::processEvents();
    }

    /** Bytes by which showing the text raises the process's peak memory, the box's copy of the text included.
     */
    std::size_t peakOf(const std::string& text) {
        std::ofstream("/proc/self/clear_refs") << "5"; // resets the peak, VmHWM
        const std::size_t before = memory("VmHWM");
        show(text);
        return memory("VmHWM") - before;
    }

    QApplication& application = support::application();
    TextBox box;
};

std::string linesOf(std::size_t bytes, std::size_t lineBytes) {
    std::string text;
    text.reserve(bytes);
    while (text.size() < bytes) {
        text.append(lineBytes - 1, 'x') += '\n';
    }
    return text;
}
} // namespace

TEST_F(TextBoxMemory, EmptyLinesTakeLessThanTenTimesTheirSize) {
    EXPECT_LT(peakOf(linesOf(kLongText, 1)), 10 * kLongText);
}

TEST_F(TextBoxMemory, OrdinaryLinesTakeLessThanTenTimesTheirSize) {
    EXPECT_LT(peakOf(linesOf(kLongText, 67)), 10 * kLongText);
}

TEST_F(TextBoxMemory, OneLineTakesLessThanTenTimesItsSize) {
    EXPECT_LT(peakOf(std::string(kLongText, 'x')), 10 * kLongText);
}

TEST_F(TextBoxMemory, AShortTextThatCannotBeTenTimesAsSmallStaysBelowAHundredMegabytes) {
    EXPECT_LT(peakOf(linesOf(TextBox::kMostShownLines, 1)), 100'000'000U);
}

TEST_F(TextBoxMemory, WhereItRunsOutTheRestIsToldAndNothingIsLost) {
    const std::string text = linesOf(14'000'000, 67);
    const rlimit before = [] {
        rlimit limit{};
        getrlimit(RLIMIT_AS, &limit);
        return limit;
    }();
    // Room for the copy of the text and for the document's first pieces.
    const rlimit little{memory("VmSize") + 85'000'000, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &little), 0);
    show(text);
    ASSERT_EQ(setrlimit(RLIMIT_AS, &before), 0);
    EXPECT_GT(box.bytesNotShown(), 1'000'000U);
    EXPECT_TRUE(box.findChild<QLabel*>(QStringLiteral("lblNotShown"))->isVisible());
    EXPECT_TRUE(box.bytes() == text);
    EXPECT_FALSE(box.isReadOnly());
    QTest::keyClicks(&box, QStringLiteral("X"));
    // The changed line ends in CRLF.
    const std::size_t lineEnd = text.find('\n');
    EXPECT_TRUE(box.bytes() == "X" + text.substr(0, lineEnd) + '\r' + text.substr(lineEnd));
}
