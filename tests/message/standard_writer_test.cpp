#include "tests/message/standard_writing.h"
#include "tests/support/encoded_words.h"
#include "tests/support/header_of.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

using smtplib::Message;
using smtplib::PreparedMessage;
using support::field;
using support::kEightBit;
using support::offering;
using support::StandardWriting;
using support::toBob;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
namespace errors = platform::errors;

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

TEST_F(StandardWriting, HalvesOfSurrogatePairsBecomeReplacementCharacters) {
    const char16_t halves[] = {u'a', 0xDE00, u'b', 0xD83D};
    EXPECT_EQ(writer.bytesOf(QString::fromUtf16(halves, 4)), "a\xef\xbf\xbd"
                                                             "b\xef\xbf\xbd");
}
