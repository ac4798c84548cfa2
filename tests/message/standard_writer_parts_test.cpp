// Attached files, forwarded messages, and the messages that an answer names.

#include "components/netcodelib/base64_decoder.h"
#include "tests/message/standard_writing.h"
#include "tests/support/encoded_words.h"
#include "tests/support/header_of.h"

#include <QByteArray>
#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <utility>

using smtplib::PreparedMessage;
using support::field;
using support::kEightBit;
using support::offering;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {
class StandardWriterParts : public support::StandardWriting {};

std::shared_ptr<const ReceivedMessage> received(std::string header, std::string body) {
    return std::make_shared<const ReceivedMessage>(ReceivedMessage{std::move(header), std::move(body)});
}

Letter forwarding(const std::shared_ptr<const ReceivedMessage>& original) {
    Letter letter{"See below", {}, {}};
    letter.origin.original = original;
    letter.origin.originalName = QStringLiteral("Größe.eml");
    return letter;
}
} // namespace

TEST_F(StandardWriterParts, AnAttachmentIsAPartOfItsOwnBehindTheText) {
    folder.write("Prüfung.pdf", "%PDF-1.4\n");
    const PreparedMessage message =
        written({"See\r\nthere", QStringLiteral("C:\\Prüfung.pdf"), {}}, offering(kEightBit));
    const std::string type = field(message.header, "Content-Type");
    ASSERT_THAT(type, StartsWith("multipart/mixed; boundary=\"=_"));
    const std::string boundary = type.substr(type.find('"') + 1, 34);
    EXPECT_EQ(message.body, "--" + boundary +
                                "\r\nContent-Type: text/plain; charset=us-ascii\r\n"
                                "Content-Transfer-Encoding: 7bit\r\n\r\nSee\r\nthere\r\n--" +
                                boundary +
                                "\r\nContent-Type: application/pdf; name=\"Prufung.pdf\"\r\n"
                                "Content-Transfer-Encoding: base64\r\n"
                                "Content-Disposition: attachment; filename*=utf-8''Pr%C3%BCfung.pdf\r\n\r\n");
    EXPECT_EQ(closing, "\r\n--" + boundary + "--\r\n");
    EXPECT_THAT(field(message.header, "Content-Transfer-Encoding"), IsEmpty());
}

TEST_F(StandardWriterParts, TheWholeSaysThatAPartOfItIsNotAscii) {
    folder.write("a.bin", "x");
    const Letter letter{"\xc3\xb6", QStringLiteral("C:\\a.bin"), {}};
    EXPECT_EQ(field(written(letter, offering(kEightBit)).header, "Content-Transfer-Encoding"), "8bit");
    EXPECT_THAT(field(written(letter, offering(!kEightBit)).header, "Content-Transfer-Encoding"), IsEmpty());
}

TEST_F(StandardWriterParts, EachMessageHasABoundaryOfItsOwn) {
    folder.write("a.bin", "x");
    const Letter letter{"x", QStringLiteral("C:\\a.bin"), {}};
    const std::string one = field(written(letter, offering(kEightBit)).header, "Content-Type");
    EXPECT_NE(field(written(letter, offering(kEightBit)).header, "Content-Type"), one);
}

TEST_F(StandardWriterParts, AnAnswerNamesTheMessagesBeforeIt) {
    Letter letter{"x", {}, {}};
    letter.origin.inReplyTo = "<2@x.org>";
    letter.origin.references = {"<1@x.org>", "<2@x.org>"};
    const PreparedMessage message = written(letter, offering(kEightBit));
    EXPECT_EQ(field(message.header, "In-Reply-To"), "<2@x.org>");
    EXPECT_EQ(field(message.header, "References"), "<1@x.org> <2@x.org>");
    EXPECT_THAT(written({"x", {}, {}}, offering(kEightBit)).header, Not(HasSubstr("References")));
}

TEST_F(StandardWriterParts, OfAHostileMessagesReferencesOnlyIdsAreTakenAndOnlySomeOfThem) {
    Letter letter{"x", {}, {}};
    letter.origin.inReplyTo = "<1@x.org>\r\nBcc: eve@example.org";
    letter.origin.references = {"eve@x.org",
                                "<a b@x.org>",
                                "<1@x.org>\r\nBcc: e@x.org",
                                "<" + std::string(600, 'x') + "@x.org>",
                                "<>",
                                "<1@x.org><2@x.org>",
                                "<\xc3\xb6@x.org>"};
    EXPECT_THAT(written(letter, offering(kEightBit)).header, Not(HasSubstr("Re")));
    EXPECT_THAT(written(letter, offering(kEightBit)).header, Not(HasSubstr("Bcc")));
    letter.origin.references.clear();
    for (int number = 0; number < 10'000; ++number) {
        letter.origin.references.push_back("<" + std::to_string(number) + "@x.org>");
    }
    const std::string references = field(written(letter, offering(kEightBit)).header, "References");
    EXPECT_THAT(references, StartsWith("<0@x.org> <1@x.org> <2@x.org> <3@x.org> <4@x.org> <9965@x.org> "));
    EXPECT_THAT(references, EndsWith(" <9998@x.org> <9999@x.org>"));
    EXPECT_EQ(support::wordsIn(references).size(), 40U);
}

TEST_F(StandardWriterParts, AForwardedMessageIsAPartByteForByte) {
    const auto original = received("From: eve@x.org\r\nSubject: x\r\n", "One\r\n.\r\n\r\nTwo  \r\n");
    const PreparedMessage message = written(forwarding(original), offering(!kEightBit));
    const std::string type = field(message.header, "Content-Type");
    const std::string boundary = type.substr(type.find('"') + 1, 34);
    EXPECT_EQ(message.body,
              "--" + boundary +
                  "\r\nContent-Type: text/plain; charset=us-ascii\r\nContent-Transfer-Encoding: 7bit\r\n\r\n"
                  "See below\r\n--" +
                  boundary +
                  "\r\nContent-Type: message/rfc822; name=\"Gro_e.eml\"\r\n"
                  "Content-Transfer-Encoding: 7bit\r\n"
                  "Content-Disposition: attachment; filename*=utf-8''Gr%C3%B6%C3%9Fe.eml\r\n\r\n"
                  "From: eve@x.org\r\nSubject: x\r\n\r\nOne\r\n.\r\n\r\nTwo  \r\n\r\n--" +
                  boundary + "--\r\n");
}

TEST_F(StandardWriterParts, AForwardedMessageThatNoServerTakesAsItIsGoesOutAsAFile) {
    const struct {
        const char* description;
        std::string body;
        bool eightBit;
        bool asFile;
    } cases[] = {
        {"8 bits, taken", "Gr\xf6\xdf\r\n", kEightBit, false},
        {"8 bits, not taken", "Gr\xf6\xdf\r\n", !kEightBit, true},
        {"a line of 998", std::string(998, 'x') + "\r\n", kEightBit, false},
        {"a line of 999", std::string(999, 'x') + "\r\n", kEightBit, true},
        {"a bare LF", "a\nb\r\n", kEightBit, true},
        {"a bare CR", "a\rb\r\n", kEightBit, true},
        {"a NUL", std::string("a\0b\r\n", 5), kEightBit, true},
        {"nothing", "", !kEightBit, false},
    };

    for (const auto& [description, body, eightBit, asFile] : cases) {
        const auto original = received("Subject: x\r\n", body);
        const PreparedMessage message = written(forwarding(original), offering(eightBit));
        const std::string whole = "Subject: x\r\n\r\n" + body;
        if (!asFile) {
            EXPECT_THAT(*message.body, HasSubstr("message/rfc822")) << description;
            EXPECT_THAT(*message.body, HasSubstr("\r\n\r\n" + whole + "\r\n--=_")) << description;
            continue;
        }
        EXPECT_THAT(*message.body, HasSubstr("application/octet-stream; name=\"Gro_e.eml\"")) << description;
        const std::size_t begin = message.body->find("\r\n\r\n", message.body->find("octet-stream")) + 4;
        const std::string text = message.body->substr(begin, message.body->find("\r\n--=_", begin) - begin);
        std::string decoded;
        netcodelib::Base64Decoder decoder;
        decoder.append(text, decoded);
        decoder.finish(decoded);
        EXPECT_EQ(decoded, whole) << description;
        EXPECT_FALSE(QByteArray::fromStdString(*message.body).contains(char(0xf6)));
    }
}

TEST_F(StandardWriterParts, AFileMayStandBesideAForwardedMessage) {
    folder.write("a.bin", "x");
    Letter letter = forwarding(received("Subject: x\r\n", "y\r\n"));
    letter.attachment = QStringLiteral("C:\\a.bin");
    const PreparedMessage message = written(letter, offering(kEightBit));
    EXPECT_LT(message.body->find("message/rfc822"), message.body->find("name=\"a.bin\""));
    EXPECT_THAT(*message.body, EndsWith("filename*=utf-8''a.bin\r\n\r\n"));
    EXPECT_THAT(closing, StartsWith("\r\n--=_"));
}
