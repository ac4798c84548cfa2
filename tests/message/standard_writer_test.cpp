#include "components/netcodelib/base64_decoder.h"
#include "message/standard_writer.h"
#include "platform/runtime_error.h"
#include "tests/support/application.h"
#include "tests/support/drive_stands_for.h"
#include "tests/support/encoded_words.h"
#include "tests/support/header_of.h"
#include "tests/support/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

using smtplib::Extensions;
using smtplib::Message;
using smtplib::PreparedMessage;
using support::field;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
namespace errors = platform::errors;

namespace {
constexpr bool kEightBit = true;

Extensions offering(bool eightBit, bool smtpUtf8 = false) {
    Extensions extensions;
    extensions.eightBit = eightBit;
    extensions.smtpUtf8 = smtpUtf8;
    return extensions;
}

Message toBob() {
    Message message;
    message.sender = "ann@example.org";
    message.recipients = "bob@example.org";
    message.subject = "Hello";
    message.messageId = "<1@example.org>";
    return message;
}

class StandardWriting : public testing::Test {
  protected:
    StandardWriting() { support::application(); }

    PreparedMessage written(const Letter& letter, const Extensions& offered,
                            const Message& fields = toBob()) {
        const ComposedMessage composed =
            writer.compose(letter, [this](const QString&, std::string_view closingLine) {
                closing = closingLine;
                return EncodedFile{};
            });
        EXPECT_EQ(composed.MessageBody, "");
        EXPECT_EQ(composed.ExtraHeaders, "");
        return composed.form(fields, offered, QDateTime::currentDateTime());
    }

    int errorOf(const Message& fields, const Extensions& offered) {
        return platform::errorNumberOf([&] { written({"x", {}, {}}, offered, fields); });
    }

    int errorOfCheck(const Message& fields) {
        return platform::errorNumberOf([&] { writer.check(fields); });
    }

    support::TemporaryFolder folder;
    support::DriveStandsFor drive{'C', folder.qtPath(".")};
    StandardWriter writer;
    /** What stands behind the encoded file. */
    std::string closing;
};

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

TEST_F(StandardWriting, APlainTextSaysWhatItIs) {
    const PreparedMessage message = written({"Hello\r\n", {}, {}}, offering(kEightBit));
    EXPECT_THAT(message.header, StartsWith("From: ann@example.org\r\nTo: bob@example.org\r\n"
                                           "Subject: Hello\r\nDate: "));
    EXPECT_THAT(message.header, EndsWith("\r\nMessage-ID: <1@example.org>\r\nMIME-Version: 1.0\r\n"
                                         "Content-Type: text/plain; charset=us-ascii\r\n"
                                         "Content-Transfer-Encoding: 7bit\r\n\r\n"));
    EXPECT_EQ(message.body, "Hello\r\n");
    EXPECT_FALSE(message.smtpUtf8);
    EXPECT_EQ(message.sender, "ann@example.org");
    EXPECT_THAT(message.mailboxes, ElementsAre("bob@example.org"));
}

TEST_F(StandardWriting, TextBeyondAsciiGoesOutAsItIsOnlyWhereTheServerTakesIt) {
    const std::string text = "Gr\xc3\xb6\xc3\x9f"
                             "e\r\n";
    const PreparedMessage raw = written({text, {}, {}}, offering(kEightBit));
    EXPECT_EQ(field(raw.header, "Content-Type"), "text/plain; charset=utf-8");
    EXPECT_EQ(field(raw.header, "Content-Transfer-Encoding"), "8bit");
    EXPECT_EQ(raw.body, text);
    const PreparedMessage encoded = written({text, {}, {}}, offering(!kEightBit));
    EXPECT_EQ(field(encoded.header, "Content-Transfer-Encoding"), "quoted-printable");
    EXPECT_EQ(encoded.body, "Gr=C3=B6=C3=9Fe\r\n");
}

TEST_F(StandardWriting, SubjectAndNamesAreEncodedAndNothingElseInTheHeader) {
    Message fields = toBob();
    fields.subject = QStringLiteral("Größe").toStdString();
    fields.recipients =
        "J\xc3\xb6rg <j@x.org>, \"M\xc3\xbcller, Ann\" <a@x.org>, \"B, C\" <b@x.org>, D E <d@x.org>";
    fields.copies = "=?utf-8?Q?x?= <c@x.org>";
    const PreparedMessage message = written({"x", {}, {}}, offering(kEightBit), fields);
    EXPECT_EQ(field(message.header, "Subject"), "=?utf-8?B?R3LDtsOfZQ==?=");
    EXPECT_EQ(field(message.header, "To"),
              "=?utf-8?B?SsO2cmc=?= <j@x.org>, =?utf-8?B?TcO8bGxlciwgQW5u?= <a@x.org>, \"B, C\" <b@x.org>, "
              "D E <d@x.org>");
    EXPECT_EQ(field(message.header, "Cc"), "=?utf-8?B?PT91dGYtOD9RP3g/PQ==?= <c@x.org>")
        << "what looks like an encoded word was typed";
    EXPECT_THAT(message.header, Not(HasSubstr("User-Agent")));
    EXPECT_THAT(message.header, Not(HasSubstr("X-Mailer")));
}

TEST_F(StandardWriting, NoLineOfTheHeaderIsLongerThanALineMayBe) {
    Message fields = toBob();
    fields.subject = QStringLiteral("e\u0301\U0001F600 שלום ").repeated(900).toStdString();
    fields.recipients = "\"" + QStringLiteral("日本").repeated(100).toStdString() + "\" <j@x.org>";
    Letter letter{"x", {}, {}};
    letter.origin.inReplyTo = "<1@x.org>";
    letter.origin.references = std::vector<std::string>(30, "<0123456789.0123456789@mail.example.org>");
    const PreparedMessage message = written(letter, offering(kEightBit), fields);
    for (std::size_t begin = 0; begin < message.header.size();) {
        const std::size_t end = message.header.find("\r\n", begin);
        EXPECT_LE(end - begin, 76U) << message.header.substr(begin, end - begin);
        begin = end + 2;
    }
    EXPECT_EQ(support::decodedWords(field(message.header, "Subject")).toStdString(), fields.subject);
}

TEST_F(StandardWriting, AnAddressBeyondAsciiNeedsAServerThatTakesIt) {
    Message fields = toBob();
    fields.recipients = "J\xc3\xb6rg <j\xc3\xb6rg@example.org>";
    const PreparedMessage message = written({"x", {}, {}}, offering(kEightBit, true), fields);
    EXPECT_TRUE(message.smtpUtf8);
    EXPECT_THAT(message.mailboxes, ElementsAre("j\xc3\xb6rg@example.org"));
    EXPECT_EQ(field(message.header, "To"), "=?utf-8?B?SsO2cmc=?= <j\xc3\xb6rg@example.org>");
    EXPECT_EQ(errorOf(fields, offering(kEightBit)), errors::AddressBeyondAscii);
    EXPECT_EQ(errorOf(fields, offering(!kEightBit, true)), errors::AddressBeyondAscii)
        << "RFC 6531 section 3.1 wants 8BITMIME beside SMTPUTF8";
    EXPECT_EQ(errorOfCheck(fields), 0) << "before the server has been asked";

    fields = toBob();
    fields.sender = "\xc3\xa4nn@example.org";
    EXPECT_EQ(errorOf(fields, offering(kEightBit)), errors::AddressBeyondAscii);
    EXPECT_EQ(written({"x", {}, {}}, offering(kEightBit, true), fields).sender, "\xc3\xa4nn@example.org");
}

TEST_F(StandardWriting, ADomainBeyondAsciiGoesOutInALabelsToAnyServer) {
    Message fields = toBob();
    fields.recipients = "bob@b\xc3\xbc"
                        "cher.example, Zo\xc3\xab <zoe@\xe6\x97\xa5\xe6\x9c\xac.example>";
    const PreparedMessage message = written({"x", {}, {}}, offering(!kEightBit), fields);
    EXPECT_THAT(message.mailboxes, ElementsAre("bob@xn--bcher-kva.example", "zoe@xn--wgv71a.example"));
    EXPECT_EQ(field(message.header, "To"),
              "bob@xn--bcher-kva.example, =?utf-8?Q?Zo=C3=AB?= <zoe@xn--wgv71a.example>");
    EXPECT_FALSE(message.smtpUtf8);
}

TEST_F(StandardWriting, WhatIsNoAddressIsRefusedBeforeAServerIsAsked) {
    for (const char* const address : {"bob", "bob@", "@x.org", "bob@x\xc2\xa0y.org", "b\xe2\x80\xaeob@x.org",
                                      "b\xc2\x85"
                                      "b@x.org",
                                      "b\xc2\xa0"
                                      "b@x.org",
                                      "bob@\xc3\xb6..org"}) {
        Message fields = toBob();
        fields.recipients = address;
        EXPECT_EQ(errorOfCheck(fields), errors::BadAddress) << address;
        const auto fault = writer.findFault("ann@x.org, " + fields.recipients, errors::BadAddress);
        ASSERT_TRUE(fault.has_value()) << address;
        EXPECT_EQ(fault->begin, 11U);
    }
    Message fields = toBob();
    fields.recipients = ",";
    EXPECT_EQ(errorOfCheck(fields), errors::NoRecipient);
    for (std::string Message::*const text : {&Message::recipients, &Message::copies, &Message::subject}) {
        fields = toBob();
        fields.*text += "\r\nBcc: eve@example.org";
        EXPECT_EQ(errorOfCheck(fields), errors::FieldHoldsLineEnd);
    }
}

TEST_F(StandardWriting, TheAddressThatAServerDoesNotTakeIsFoundInItsField) {
    const std::string text = "Zo\xc3\xab <z@x.org>, bob@b\xc3\xbc.org, j\xc3\xb6@x.org";
    const auto fault = writer.findFault(text, errors::AddressBeyondAscii);
    ASSERT_TRUE(fault.has_value());
    EXPECT_EQ(text.substr(fault->begin, fault->end - fault->begin), "j\xc3\xb6@x.org");
    EXPECT_FALSE(writer.findFault("bob@b\xc3\xbc.org", errors::AddressBeyondAscii).has_value());
    EXPECT_FALSE(writer.findFault(text, errors::BadAddress).has_value());
}

TEST_F(StandardWriting, AnAttachmentIsAPartOfItsOwnBehindTheText) {
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

TEST_F(StandardWriting, TheWholeSaysThatAPartOfItIsNotAscii) {
    folder.write("a.bin", "x");
    const Letter letter{"\xc3\xb6", QStringLiteral("C:\\a.bin"), {}};
    EXPECT_EQ(field(written(letter, offering(kEightBit)).header, "Content-Transfer-Encoding"), "8bit");
    EXPECT_THAT(field(written(letter, offering(!kEightBit)).header, "Content-Transfer-Encoding"), IsEmpty());
}

TEST_F(StandardWriting, EachMessageHasABoundaryOfItsOwn) {
    folder.write("a.bin", "x");
    const Letter letter{"x", QStringLiteral("C:\\a.bin"), {}};
    const std::string one = field(written(letter, offering(kEightBit)).header, "Content-Type");
    EXPECT_NE(field(written(letter, offering(kEightBit)).header, "Content-Type"), one);
}

TEST_F(StandardWriting, AnAnswerNamesTheMessagesBeforeIt) {
    Letter letter{"x", {}, {}};
    letter.origin.inReplyTo = "<2@x.org>";
    letter.origin.references = {"<1@x.org>", "<2@x.org>"};
    const PreparedMessage message = written(letter, offering(kEightBit));
    EXPECT_EQ(field(message.header, "In-Reply-To"), "<2@x.org>");
    EXPECT_EQ(field(message.header, "References"), "<1@x.org> <2@x.org>");
    EXPECT_THAT(written({"x", {}, {}}, offering(kEightBit)).header, Not(HasSubstr("References")));
}

TEST_F(StandardWriting, OfAHostileMessagesReferencesOnlyIdsAreTakenAndOnlySomeOfThem) {
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

TEST_F(StandardWriting, AForwardedMessageIsAPartByteForByte) {
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

TEST_F(StandardWriting, AForwardedMessageThatNoServerTakesAsItIsGoesOutAsAFile) {
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

TEST_F(StandardWriting, AFileMayStandBesideAForwardedMessage) {
    folder.write("a.bin", "x");
    Letter letter = forwarding(received("Subject: x\r\n", "y\r\n"));
    letter.attachment = QStringLiteral("C:\\a.bin");
    const PreparedMessage message = written(letter, offering(kEightBit));
    EXPECT_LT(message.body->find("message/rfc822"), message.body->find("name=\"a.bin\""));
    EXPECT_THAT(*message.body, EndsWith("filename*=utf-8''a.bin\r\n\r\n"));
    EXPECT_THAT(closing, StartsWith("\r\n--=_"));
}

TEST_F(StandardWriting, HalvesOfSurrogatePairsBecomeReplacementCharacters) {
    const char16_t halves[] = {u'a', 0xDE00, u'b', 0xD83D};
    EXPECT_EQ(writer.bytesOf(QString::fromUtf16(halves, 4)), "a\xef\xbf\xbd"
                                                             "b\xef\xbf\xbd");
}
