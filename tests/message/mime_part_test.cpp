#include "message/mime_part.h"
#include "platform/runtime_error.h"
#include "tests/support/application.h"
#include "tests/support/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {
TEST(FilePartHeader, HasTheTypeThePlainNameTheEncodingAndTheWholeName) {
    EXPECT_EQ(filePartHeader("application/pdf", TransferForm::Base64, QStringLiteral("Prüfung 1.pdf")),
              "Content-Type: application/pdf; name=\"Prufung 1.pdf\"\r\n"
              "Content-Transfer-Encoding: base64\r\n"
              "Content-Disposition: attachment; filename*=utf-8''Pr%C3%BCfung%201.pdf\r\n");
    EXPECT_EQ(filePartHeader("text/plain", TransferForm::Base64, QStringLiteral("a.txt"), "utf-8"),
              "Content-Type: text/plain; charset=utf-8; name=\"a.txt\"\r\n"
              "Content-Transfer-Encoding: base64\r\n"
              "Content-Disposition: attachment; filename*=utf-8''a.txt\r\n");
}

TEST(FilePartHeader, IsFoldedAndHoldsNoLineOfTheName) {
    const std::vector<QString> names = {
        QStringLiteral("日本語の長い名前").repeated(20) + QStringLiteral(".docx"),
        QStringLiteral("a\r\nBcc: eve@example.org\r\n\r\nb"),
        QStringLiteral("x").repeated(255),
        QStringLiteral("\"\\; name=\"b\""),
        QStringLiteral("\u202Egpj.exe"),
    };
    for (const QString& name : names) {
        const std::string header = filePartHeader("application/octet-stream", TransferForm::Base64, name);
        EXPECT_THAT(header, Not(HasSubstr("\r\nBcc")));
        EXPECT_THAT(header, Not(HasSubstr("\r\n\r\n")));
        EXPECT_THAT(header, Not(HasSubstr("%E2%80%AE")));
        for (std::size_t begin = 0; begin < header.size();) {
            const std::size_t end = header.find("\r\n", begin);
            ASSERT_NE(end, std::string::npos);
            EXPECT_LE(end - begin, 78U) << header.substr(begin, end - begin);
            begin = end + 2;
        }
    }
}

TEST(PlainFileName, KeepsWhatIsAsciiAndTheExtension) {
    const struct {
        QString name;
        std::string plain;
    } cases[] = {
        {QStringLiteral("report.txt"), "report.txt"},
        {QStringLiteral("résumé.pdf"), "resume.pdf"},
        {QStringLiteral("re\u0301sume\u0301.pdf"), "resume.pdf"},
        {QStringLiteral("日本.txt"), "__.txt"},
        {QStringLiteral("a\"b\\c.txt"), "a_b_c.txt"},
        {QStringLiteral("a\r\nb"), "a__b"},
        {QStringLiteral("\U0001F600.png"), "_.png"},
        {QStringLiteral("x").repeated(100) + QStringLiteral(".jpeg"), std::string(55, 'x') + ".jpeg"},
        {QString(), ""},
    };

    for (const auto& [name, plain] : cases) {
        EXPECT_EQ(plainFileName(name), plain);
    }
}

TEST(NewBoundary, StandsInNoneOfTheTextsAndIsAnotherOneEachTime) {
    int drawn = 0;
    const auto draw = [&drawn] { return "b" + std::to_string(drawn++); };
    EXPECT_EQ(newBoundary({"--b0\r\n", "xb1y"}, draw), "b2");
    EXPECT_EQ(drawn, 3);
    const std::string boundary = newBoundary({"text"});
    EXPECT_NE(boundary, newBoundary({"text"}));
    EXPECT_THAT(boundary, testing::MatchesRegex("=_[0-9a-f]{32}"));
}

class FileTypes : public testing::Test {
  protected:
    FileTypes() { support::application(); }

    FileType typeOf(const std::string& name, const std::string& bytes) {
        folder.write(name, bytes);
        return fileTypeOf(folder.qtPath(name));
    }

    support::TemporaryFolder folder;
};

TEST_F(FileTypes, AreThoseOfTheSharedMimeDatabase) {
    EXPECT_EQ(typeOf("a.pdf", "%PDF-1.4\n").type, "application/pdf");
    EXPECT_EQ(typeOf("a.png", "\x89PNG\r\n\x1a\n").type, "image/png");
    EXPECT_EQ(typeOf("a.jpg", "\xff\xd8\xff").type, "image/jpeg");
    EXPECT_EQ(typeOf("a.html", "<html>").type, "text/html");
    EXPECT_EQ(typeOf("a.unheard-of", std::string("\0\1\2\3", 4)).type, "application/octet-stream");
}

TEST_F(FileTypes, OfMessagesAndEmptyFilesAreThoseOfAnyFile) {
    // Base64 must not be used for message/rfc822 (RFC 2046 section 5.2.1).
    EXPECT_EQ(typeOf("a.eml", "From: a@x.org\r\n\r\nb").type, "application/octet-stream");
    EXPECT_THAT(typeOf("a.mht", "x").type, Not(HasSubstr("multipart/")));
    EXPECT_EQ(typeOf("empty", "").type, "application/octet-stream");
}

TEST_F(FileTypes, OfTextsTellTheirCharsetWhereItIsKnown) {
    EXPECT_EQ(typeOf("a.txt", "plain").charset, "us-ascii");
    EXPECT_EQ(typeOf("b.txt", "gr\xc3\xbc\xc3\x9f").charset, "utf-8");
    EXPECT_THAT(typeOf("c.txt", "gr\xfc\xdf").charset, IsEmpty());
    EXPECT_EQ(typeOf("c.txt", "gr\xfc\xdf").type, "text/plain");
    EXPECT_THAT(typeOf("d.pdf", "%PDF-1.4\n").charset, IsEmpty());
    // Characters that lie across the pieces in which a file is read.
    for (std::size_t before = 65'530; before < 65'540; ++before) {
        EXPECT_EQ(typeOf("e.txt", std::string(before, 'x') + "\xf0\x9f\x98\x80" + "end").charset, "utf-8");
    }
    EXPECT_THAT(typeOf("f.txt", std::string(65'536, 'x') + "\xc3").charset, IsEmpty());
}
} // namespace
