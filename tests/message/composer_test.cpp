#include "message/composer.h"
#include "platform/runtime_error.h"
#include "tests/support/window_test.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::IsEmpty;

namespace {
struct NameCase {
    const char* description;
    const char* path;
    const char* name;
};

class AttachmentName : public testing::TestWithParam<NameCase> {};

EncodedFile noEncoder(const QString& /*attachment*/, std::string_view /*closingLine*/) {
    ADD_FAILURE() << "nothing is to be encoded";
    return {};
}
} // namespace

TEST_P(AttachmentName, IsWhatFollowsDriveAndBackslashes) {
    EXPECT_EQ(attachmentFileName(QString::fromUtf8(GetParam().path)), QString::fromUtf8(GetParam().name));
}

INSTANTIATE_TEST_SUITE_P(
    Paths, AttachmentName,
    testing::Values(NameCase{"DriveAndDirectory", "C:\\DOCS\\REPORT.TXT", "REPORT.TXT"},
                    NameCase{"DriveWithoutABackslash", "D:REPORT.TXT", "REPORT.TXT"},
                    NameCase{"NetworkPath", "\\\\SERVER\\SHARE\\F.BIN", "F.BIN"},
                    NameCase{"BareName", "REPORT.TXT", "REPORT.TXT"},
                    NameCase{"SlashesAreNoSeparators", "/home/ann/report.txt", "/home/ann/report.txt"},
                    NameCase{"SlashesBehindADrive", "Z:/tmp/a.txt", "/tmp/a.txt"},
                    NameCase{"EndsInABackslash", "C:\\DOCS\\", ""}, NameCase{"DriveAlone", "C:", ""},
                    NameCase{"ColonFirst", ":a", ":a"}, NameCase{"OneCharacter", "x", "x"},
                    NameCase{"AnyCharacterBeforeTheColon", "7:a", "a"},
                    NameCase{"SecondDrive", "C:D:x", "D:x"},
                    NameCase{"OtherAlphabets", "C:\\Übung\\Prüfung.txt", "Prüfung.txt"}),
    [](const auto& nameCase) { return std::string(nameCase.param.description); });

TEST(Composer, WithoutAnAttachmentTheBodyIsExactlyTheTypedText) {
    const ComposedMessage message = Compose("Hello\r\n\r\nBye", {}, noEncoder);
    EXPECT_EQ(message.MessageBody, "Hello\r\n\r\nBye");
    EXPECT_THAT(message.ExtraHeaders, IsEmpty());
    EXPECT_EQ(message.DataFile.path, QString());
}

TEST(Composer, WithAnAttachmentTheMessageIsThisByteForByte) {
    QString encoded;
    std::string closing;
    const ComposedMessage message = Compose("Hello\r\nBye", QStringLiteral("C:\\DOCS\\REPORT.TXT"),
                                            [&](const QString& attachment, std::string_view closingLine) {
                                                encoded = attachment;
                                                closing = closingLine;
                                                return EncodedFile{QStringLiteral("C:\\_brndwake.tmp"), {}};
                                            });
    EXPECT_EQ(message.ExtraHeaders,
              "MIME-Version: 1.0\r\n"
              "Content-Type: multipart/mixed; boundary=\"--*******Brindlewake************\"\r\n");
    EXPECT_EQ(message.MessageBody, "This is a multi-part message in MIME format.\r\n"
                                   "----*******Brindlewake************\r\n"
                                   "\r\n"
                                   "Content-Type: text/plain;\r\n"
                                   "\r\n"
                                   "Hello\r\nBye\r\n"
                                   "----*******Brindlewake************\r\n"
                                   "Content-Type: application/octet-stream; name=\"REPORT.TXT\"\r\n"
                                   "Content-Transfer-Encoding: base64\r\n"
                                   "\r\n");
    EXPECT_EQ(encoded, QStringLiteral("C:\\DOCS\\REPORT.TXT"));
    EXPECT_EQ(closing, "----*******Brindlewake************--\r\n");
    EXPECT_EQ(message.DataFile.path, QStringLiteral("C:\\_brndwake.tmp"));
}

TEST(Composer, AnEmptyTextWithAnAttachmentStillMakesATextPartWithAnEmptyLine) {
    const ComposedMessage message = Compose({}, QStringLiteral("a"), [](const QString&, std::string_view) {
        return EncodedFile{QStringLiteral("t"), {}};
    });
    EXPECT_NE(message.MessageBody.find("Content-Type: text/plain;\r\n\r\n\r\n----***"), std::string::npos);
}

TEST(Composer, AnAttachmentsNameThatWouldEndItsQuotesOrItsLineIsRefused) {
    for (const char16_t* path : {u"C:\\a\"b", u"C:\\a\rb", u"C:\\a\nb"}) {
        EXPECT_EQ(platform::errorNumberOf([&] { Compose("x", QString::fromUtf16(path), noEncoder); }),
                  platform::errors::BadFileName);
    }
}

TEST(Composer, AnErrorOfTheEncoderReachesTheCaller) {
    EXPECT_EQ(platform::errorNumberOf([] {
                  Compose("x", QStringLiteral("gone.txt"),
                          [](const QString&, std::string_view) -> EncodedFile {
                              throw platform::RuntimeError(platform::errors::FileNotFound);
                          });
              }),
              platform::errors::FileNotFound);
}
