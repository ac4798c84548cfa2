// Whole messages: what is shown of them and what is attached to them.

#include "tests/standard/local_zone.h"
#include "tests/standard/read_mail.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {
using support::readMail;
using testing::ElementsAre;
using testing::IsEmpty;

/** A multipart of the kind, whose parts are given with their headers. */
std::string multipart(const std::string& kind, const std::vector<std::string>& parts,
                      const std::string& boundary = "cut") {
    std::string text = "Content-Type: multipart/" + kind + "; boundary=" + boundary + "\n\npreamble\n";
    for (const std::string& part : parts) {
        text += "--" + boundary + "\n" + part + "\n";
    }
    return text + "--" + boundary + "--\nepilogue\n";
}

const std::string kPlain = "Content-Type: text/plain\n\nplain";
const std::string kHtml = "Content-Type: text/html\n\n<p>html</p>";
const std::string kPicture = "Content-Type: image/png; name=p.png\nContent-Transfer-Encoding: base64\n"
                             "Content-Disposition: inline\nContent-ID: <p>\n\nQUJD";
const std::string kFile = "Content-Type: application/pdf\nContent-Disposition: attachment; filename=f.pdf\n"
                          "Content-Transfer-Encoding: base64\n\nQUJDRA==";
const std::string kCalendar =
    "Content-Type: text/calendar; method=REQUEST\n\nBEGIN:VCALENDAR\nBEGIN:VEVENT\n"
    "SUMMARY:Tea\nLOCATION:Room 1\nDTSTART:20261203T153000\nEND:VEVENT\nEND:VCALENDAR\n";
const std::string kMessage =
    "Content-Type: message/rfc822\n\nSubject: inner\nContent-Type: text/plain\n\ninner text";

struct ReadingCase {
    const char* name;
    std::string mail;
    std::string text;
    std::vector<std::string> attachments;
};

class Reading : public testing::TestWithParam<ReadingCase> {};

TEST_P(Reading, GivesTextAndAttachments) {
    const support::ReadMail mail = readMail(GetParam().mail);
    EXPECT_EQ(mail.message.text, GetParam().text);
    EXPECT_EQ(mail.attachments(), GetParam().attachments);
}

const ReadingCase kTexts[] = {
    {"PlainText", "Subject: x\n\na\nb\n", "a\r\nb\r\n", {}},
    {"NoText", "Subject: x\n", "", {}},
    {"QuotedPrintable",
     "Content-Type: text/plain; charset=utf-8\nContent-Transfer-Encoding: quoted-printable\n\n=C3=A4=\nb\n",
     "äb\r\n",
     {}},
    {"Base64",
     "Content-Type: text/plain; charset=iso-8859-1\nContent-Transfer-Encoding: base64\n\n5PY=\n",
     "äö",
     {}},
    {"LineEndsOfAllKinds",
     "Content-Transfer-Encoding: quoted-printable\n\na=0Ab=0Dc=0D=0Ad\n",
     "a\r\nb\r\nc\r\nd\r\n",
     {}},
    {"ByteOrderMark",
     "Content-Type: text/plain; charset=utf-8\n\n\xEF\xBB\xBF"
     "a\n",
     "a\r\n",
     {}},
    {"Flowed", "Content-Type: text/plain; format=flowed\n\na \nb\n", "a b\r\n", {}},
    {"Html",
     "Content-Type: text/html; charset=utf-8\n\n<p>a <a href='http://x.example'>b</a></p>\n",
     "a b <http://x.example>",
     {}},
    {"HtmlThatNamesItsCharset", "Content-Type: text/html\n\n<meta charset=koi8-r>\xC1\n", "а", {}},
    {"HalfAType", "Content-Type: text\n\na\n", "a\r\n", {}},
    {"TypeInUpperCase", "CONTENT-TYPE: TEXT/HTML\n\n<b>a</b>\n", "a", {}},
    {"UnknownEncoding",
     "Content-Transfer-Encoding: x-nobody\n\na\xE4\n",
     "[This part cannot be decoded.]\r\naä\r\n",
     {}},
    {"WordsCalledBase64",
     "Content-Transfer-Encoding: base64\n\nThis is just plain text, you know.\n",
     "[This part cannot be decoded.]\r\nThis is just plain text, you know.\r\n",
     {}},
    {"UuencodedTextStaysText",
     "Subject: x\n\nbegin 644 a\n#0V%T\n`\nend\n",
     "begin 644 a\r\n#0V%T\r\n`\r\nend\r\n",
     {}},
    {"YEncStaysText",
     "Subject: x\n\n=ybegin line=128 size=3 name=a\nabc\n=yend size=3\n",
     "=ybegin line=128 size=3 name=a\r\nabc\r\n=yend size=3\r\n",
     {}},
    {"ManyBytes",
     "Subject: x\n\n" + std::string(100'000, 'a') + "\n",
     std::string(100'000, 'a') + "\r\n",
     {}},
    {"TextAttachedAlone",
     "Content-Disposition: attachment; filename=a.txt\n\nabc\n",
     "",
     {"a.txt (5 bytes)"}},
    {"EmptyLineMissing", "Subject: x\nHere the text begins.\n", "Here the text begins.\r\n", {}},
    {"EmptyLineOfBlanks",
     "Subject: x\n \nHere the text\nbegins: now.\n",
     "Here the text\r\nbegins: now.\r\n",
     {}},
    {"NoHeaderAtAll", "Just words\n\nand more\n", "Just words\r\n\r\nand more\r\n", {}},
    {"OddLineInTheHeader",
     "Received: x\nodd line\nSubject: x\nContent-Type: text/html\n\n<b>a</b>\n",
     "a",
     {}},
};

INSTANTIATE_TEST_SUITE_P(Texts, Reading, testing::ValuesIn(kTexts),
                         [](const auto& test) { return std::string(test.param.name); });

const ReadingCase kMultiparts[] = {
    {"Mixed", multipart("mixed", {kPlain, kFile}), "plain", {"f.pdf (4 bytes)"}},
    {"AllTextsInTheirOrder",
     multipart("mixed", {"\none\n", kFile, "\ntwo", "Content-Type: text/html\n\nthree"}),
     "one\r\n\r\ntwo\r\n\r\nthree",
     {"f.pdf (4 bytes)"}},
    {"Alternative", multipart("alternative", {kPlain, kHtml}), "plain", {}},
    {"AlternativeInTheWrongOrder", multipart("alternative", {kHtml, kPlain}), "plain", {}},
    {"AlternativeOfHtmlAlone", multipart("alternative", {kHtml}), "html", {}},
    {"AlternativeWithEmptyPlainText",
     multipart("alternative", {"Content-Type: text/plain\n\n \n", kHtml}),
     "html",
     {}},
    {"AlternativeOfAnotherText",
     multipart("alternative", {"Content-Type: text/x-other\n\nother"}),
     "other",
     {}},
    {"AlternativeWithNamedHtml",
     multipart("alternative", {kPlain, "Content-Type: text/html; name=m.html\n\n<p>html</p>"}),
     "plain",
     {}},
    {"AlternativeWithRelatedHtml",
     multipart("alternative", {kPlain, multipart("related", {kHtml, kPicture}, "inner")}),
     "plain",
     {"p.png (3 bytes)"}},
    {"AlternativeWithFilesInside",
     multipart("alternative", {kPlain, multipart("mixed", {kHtml, kFile, kHtml}, "inner")}),
     "plain",
     {"f.pdf (4 bytes)"}},
    {"AlternativeInMixed",
     multipart("mixed", {multipart("alternative", {kPlain, kHtml}, "inner"), kFile}),
     "plain",
     {"f.pdf (4 bytes)"}},
    {"Related", multipart("related", {kHtml, kPicture}), "html", {"p.png (3 bytes)"}},
    {"RelatedWithItsRootBehind",
     multipart("related; start=\"<r>\"",
               {kPicture, "Content-Type: text/html\nContent-ID: <r>\n\n<p>root</p>"}),
     "root",
     {"p.png (3 bytes)"}},
    {"Invitation",
     multipart("alternative", {kPlain, kHtml, kCalendar}),
     "plain\r\n\r\nTea\r\nWhere: Room 1\r\nWhen: 2026-12-03 15:30\r\n",
     {"attachment.ics (113 bytes)"}},
    {"InvitationTwice",
     multipart("mixed", {multipart("alternative", {kPlain, kCalendar}, "inner"),
                         "Content-Disposition: attachment; filename=i.ics\n" + kCalendar}),
     "plain\r\n\r\nTea\r\nWhere: Room 1\r\nWhen: 2026-12-03 15:30\r\n",
     {"attachment.ics (113 bytes)", "i.ics (113 bytes)"}},
    {"InlineTextWithAName",
     multipart("mixed", {"Content-Type: text/plain; name=n.txt\n\nnamed"}),
     "named",
     {"n.txt (5 bytes)"}},
    {"AttachedText",
     multipart("mixed", {kPlain, "Content-Disposition: attachment; filename=n.txt\n\nkept apart"}),
     "plain",
     {"n.txt (10 bytes)"}},
    {"UnknownDisposition",
     multipart("mixed", {kPlain, "Content-Disposition: x-strange\n\nkept apart"}),
     "plain",
     {"attachment.txt (10 bytes)"}},
    {"WithoutAName",
     multipart("mixed", {"Content-Type: application/pdf\n\nx", "Content-Type: application/x-nobody\n\nx"}),
     "",
     {"attachment.pdf (1 bytes)", "attachment (1 bytes)"}},
    {"Message", multipart("mixed", {kPlain, kMessage}), "plain", {"attachment.eml (54 bytes)"}},
    {"MessageWithAName",
     multipart("mixed", {kPlain, "Content-Disposition: attachment; filename=m.eml\n" + kMessage}),
     "plain",
     {"m.eml (54 bytes)"}},
    {"Digest", multipart("digest", {"\nSubject: one\n\ntext"}), "", {"attachment.eml (20 bytes)"}},
    {"Signed",
     multipart("signed", {kPlain, "Content-Type: application/pgp-signature\n\nsignature"}),
     "plain",
     {"attachment.asc (9 bytes)"}},
    {"SignedByCertificate",
     multipart("signed", {kPlain, "Content-Type: application/pkcs7-signature; name=smime.p7s\n"
                                  "Content-Transfer-Encoding: base64\n\nQUJD"}),
     "plain",
     {"smime.p7s (3 bytes)"}},
    {"EncryptedByPgp",
     multipart("encrypted; protocol=\"application/pgp-encrypted\"",
               {"Content-Type: application/pgp-encrypted\n\nVersion: 1",
                "Content-Type: application/octet-stream; name=encrypted.asc\n\n-----BEGIN PGP MESSAGE-----"}),
     "[This message is encrypted (PGP).]",
     {"attachment.pgp (10 bytes)", "encrypted.asc (27 bytes)"}},
    {"EncryptedByCertificate",
     "Content-Type: application/pkcs7-mime; smime-type=enveloped-data; name=smime.p7m\n"
     "Content-Transfer-Encoding: base64\n\nQUJD\n",
     "[This message is encrypted (S/MIME).]",
     {"smime.p7m (3 bytes)"}},
    {"SignedOpaquely",
     "Content-Type: application/pkcs7-mime; smime-type=signed-data; name=smime.p7m\n"
     "Content-Transfer-Encoding: base64\n\nQUJD\n",
     "[This message is signed (S/MIME), and its text lies inside the signature.]",
     {"smime.p7m (3 bytes)"}},
    {"SignedOpaquelyWithoutAWord",
     "Content-Type: application/x-pkcs7-mime; name=smime.p7m\n"
     "Content-Transfer-Encoding: base64\n\nMIAGCSqGSIb3DQEHAqCA\n",
     "[This message is signed (S/MIME), and its text lies inside the signature.]",
     {"smime.p7m (15 bytes)"}},
    {"CertificatesWithoutAWord",
     "Content-Type: application/x-pkcs7-mime; name=ann.P7C\n"
     "Content-Transfer-Encoding: base64\n\nMIAGCSqGSIb3DQEHAqCA\n",
     "[This message holds certificates (S/MIME).]",
     {"ann.P7C (15 bytes)"}},
    {"DeliveryReport",
     multipart("report; report-type=delivery-status",
               {kPlain, "Content-Type: message/delivery-status\n\nAction: failed", kMessage}),
     "plain\r\n\r\nAction: failed",
     {"attachment (14 bytes)", "attachment.eml (54 bytes)"}},
    {"UuencodedAttachment",
     multipart("mixed",
               {kPlain, "Content-Type: application/octet-stream; name=cat.txt\n"
                        "Content-Transfer-Encoding: x-uuencode\n\nbegin 644 cat.txt\n#0V%T\n`\nend"}),
     "plain",
     {"cat.txt (3 bytes)"}},
    {"FooterBehindAttachments",
     multipart("mixed", {kPlain, kFile, "\n_____\nList footer"}),
     "plain\r\n\r\n_____\r\nList footer",
     {"f.pdf (4 bytes)"}},
    {"TextInUnknownEncoding",
     multipart("mixed", {kPlain, "Content-Transfer-Encoding: x-nobody\n\ncode"}),
     "plain\r\n\r\n[This part cannot be decoded.]\r\ncode",
     {}},
    {"BodyOfNothingButAFile", "Content-Type: application/pdf; name=f.pdf\n\nabc\n", "", {"f.pdf (5 bytes)"}},
    {"MessageAlone", kMessage, "", {"attachment.eml (56 bytes)"}},
};

INSTANTIATE_TEST_SUITE_P(Multiparts, Reading, testing::ValuesIn(kMultiparts),
                         [](const auto& test) { return std::string(test.param.name); });

const std::string kTwoParts = "\none\n--cut\n\ntwo\n--cut--\n";
const std::string kBothTexts = "one\r\n\r\ntwo";

const ReadingCase kBoundaries[] = {
    {"Unquoted", "Content-Type: multipart/mixed; boundary=cut\n\n--cut\n" + kTwoParts, kBothTexts, {}},
    {"Folded", "Content-Type: multipart/mixed;\n\tboundary=\"cut\"\n\n--cut\n" + kTwoParts, kBothTexts, {}},
    {"InUpperCase", "CONTENT-TYPE: MULTIPART/MIXED; BOUNDARY=\"cut\"\n\n--cut\n" + kTwoParts, kBothTexts, {}},
    {"SecondQuoteMissing",
     "Content-Type: multipart/mixed; boundary=\"cut\n\n--cut\n" + kTwoParts,
     kBothTexts,
     {}},
    {"Missing",
     "Content-Type: multipart/mixed\n\n--cut\nContent-Type: text/plain\n" + kTwoParts,
     kBothTexts,
     {}},
    {"Empty",
     "Content-Type: multipart/mixed; boundary=\"\"\n\n--cut\nContent-Type: text/plain\n" + kTwoParts,
     kBothTexts,
     {}},
    {"OfAnotherMessage",
     "Content-Type: multipart/mixed; boundary=\"other\"\n\n--cut\nContent-Type: text/plain\n" + kTwoParts,
     kBothTexts,
     {}},
    {"NowhereAtAll", "Content-Type: multipart/mixed; boundary=cut\n\njust text\n", "just text\r\n", {}},
    {"BlanksBehind",
     "Content-Type: multipart/mixed; boundary=cut\n\n--cut \t\n\none\n--cut \n\ntwo\n--cut-- \n",
     kBothTexts,
     {}},
    {"BlanksInside",
     "Content-Type: multipart/mixed; boundary=\"c u t\"\n\n--c u t\n\none\n--c u t\n\ntwo\n--c u t--\n",
     kBothTexts,
     {}},
    {"ClosingLineMissing",
     "Content-Type: multipart/mixed; boundary=cut\n\n--cut\n\none\n--cut\n\ntwo\n",
     kBothTexts + "\r\n",
     {}},
    {"BeginningOfALongerOne",
     "Content-Type: multipart/mixed; boundary=cut\n\n--cut\n\none\n--cutter\n--cut\n\ntwo\n--cut--\n",
     "one\r\n--cutter\r\n\r\ntwo",
     {}},
    {"SameInside",
     "Content-Type: multipart/mixed; boundary=cut\n\n--cut\nContent-Type: multipart/mixed; boundary=cut\n\n"
     "--cut\n\none\n--cut--\n\n--cut\n\ntwo\n--cut--\n",
     kBothTexts,
     {}},
    {"InsideALine",
     "Content-Type: multipart/mixed; boundary=cut\n\n--cut\n\nx --cut\n--cut--\n",
     "x --cut",
     {}},
    {"AtTheVeryStart", "Content-Type: multipart/mixed; boundary=cut\n\n--cut\n\none\n--cut--\n", "one", {}},
    {"OfAThousandCharacters",
     "Content-Type: multipart/mixed; boundary=" + std::string(1'000, 'b') + "\n\n--" +
         std::string(1'000, 'b') + "\n\none\n--" + std::string(1'000, 'b') + "--\n",
     "one",
     {}},
    {"HeaderOfAPartWithoutAnEnd",
     "Content-Type: multipart/mixed; boundary=cut\n\n--cut\nText at once\nb\n--cut--\n",
     "Text at once\r\nb",
     {}},
};

INSTANTIATE_TEST_SUITE_P(Boundaries, Reading, testing::ValuesIn(kBoundaries),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(ReadingOfAHeader, DecodesItsFields) {
    const support::LocalZone berlin("Europe/Berlin");
    const support::ReadMail mail =
        readMail("From: =?utf-8?Q?Andr=C3=A9?= <a@example.org>\nFrom: second@example.org\n"
                 "SUBJECT: =?utf-8?Q?a?=\n =?utf-8?Q?b?=\n\tc\nDate: Sat, 21 Nov 2026 16:42:00 +0000\n\n");
    EXPECT_EQ(mail.message.fields.from, "André <a@example.org>");
    EXPECT_EQ(mail.message.fields.subject, "ab\tc");
    EXPECT_EQ(mail.message.fields.date, "2026-11-21 17:42");
}

TEST(ReadingOfAHeader, LeavesMissingFieldsEmpty) {
    const support::ReadMail mail = readMail("X: y\n\ntext\n");
    EXPECT_EQ(mail.message.fields.from + mail.message.fields.subject + mail.message.fields.date, "");
    EXPECT_EQ(mail.message.answerTo, "");
    EXPECT_EQ(mail.message.messageId, "");
    EXPECT_THAT(mail.message.references, IsEmpty());
}

TEST(ReadingOfAHeader, TellsWhereAnswersGo) {
    EXPECT_EQ(readMail("From: a@b\nReply-To: \"C, D\" <c@d>\n\n").message.answerTo, "\"C, D\" <c@d>");
    EXPECT_EQ(readMail("From: a@b\nReply-To: nobody\n\n").message.answerTo, "a@b");
    EXPECT_EQ(readMail("From: somebody\n\n").message.answerTo, "somebody");
}

TEST(ReadingOfAHeader, TellsWhatAnAnswerRefersTo) {
    const support::ReadMail mail =
        readMail("Message-ID: <3@x>\nReferences: <1@x>\n <2@x>\nIn-Reply-To: <9@x>\n\n");
    EXPECT_EQ(mail.message.messageId, "<3@x>");
    EXPECT_THAT(mail.message.references, ElementsAre("<1@x>", "<2@x>", "<3@x>"));
    EXPECT_THAT(readMail("Message-ID: <3@x>\nIn-Reply-To: <2@x>\n\n").message.references,
                ElementsAre("<2@x>", "<3@x>"));
    EXPECT_THAT(readMail("Message-ID: <3@x>\nIn-Reply-To: <1@x> <2@x>\n\n").message.references,
                ElementsAre("<3@x>"));
}

TEST(ReadingOfAttachments, DecodesNames) {
    const auto named = [](const std::string& fields) {
        return readMail(fields + "\n\nx\n").message.attachments.at(0).name;
    };
    EXPECT_EQ(
        named(
            "Content-Type: image/png; name*=utf-8''%C3%A4.png\nContent-Disposition: inline; filename=a.png"),
        "ä.png");
    EXPECT_EQ(named("Content-Type: image/png; name=b.png\nContent-Disposition: inline; filename=a.png"),
              "a.png");
    EXPECT_EQ(named("Content-Type: image/png; name=b.png\nContent-Disposition: inline; filename=\" \""),
              "b.png");
    EXPECT_EQ(named("Content-Type: image/png; name=\"=?utf-8?Q?=C3=A4?=.png\""), "ä.png");
    EXPECT_EQ(named("Content-Type: image/png; name=\"../../x.png\""), "../../x.png");
}

TEST(ReadingOfAttachments, GivesMessagesByteForByte) {
    const support::ReadMail mail = readMail(multipart(
        "mixed",
        {"Content-Type: message/rfc822\n\nSubject:  two  blanks\nX:\ttab\n folded\n\n--inner\n\ntext\n\n"}));
    EXPECT_EQ(mail.bytesOf(0),
              "Subject:  two  blanks\r\nX:\ttab\r\n folded\r\n\r\n--inner\r\n\r\ntext\r\n\r\n");
}

TEST(ReadingOfAttachments, DecodesAMessageThatIsEncoded) {
    const support::ReadMail mail =
        readMail("Content-Type: message/rfc822\nContent-Transfer-Encoding: base64\n\n"
                 "U3ViamVjdDogeA0KDQp5\n");
    EXPECT_EQ(mail.bytesOf(0), "Subject: x\r\n\r\ny");
}

TEST(ReadingOfAttachments, GivesWhatCannotBeDecodedAsItStands) {
    const support::ReadMail mail =
        readMail("Content-Type: image/png\nContent-Transfer-Encoding: x-nobody\n\na=41\n");
    EXPECT_EQ(mail.bytesOf(0), "a=41\r\n");
}
} // namespace
