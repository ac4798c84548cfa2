// What the standard writer writes, read by programs that are nobody's here.

#include "components/smtplib/wire_text.h"
#include "message/standard_reader.h"
#include "message/standard_writer.h"
#include "tests/support/application.h"
#include "tests/support/drive_stands_for.h"
#include "tests/support/places.h"
#include "tests/support/temporary_folder.h"

#include <QByteArray>
#include <QProcess>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {
/** How long another program may take, on a busy computer too. */
constexpr int kPatienceMs = 120'000;

/** A letter as it is typed. */
struct Hard {
    const char* name;
    QString subject;
    QString displayName;
    QString text;
    /** Empty for no file. */
    QString fileName;
    std::string content;
    std::string type = "application/octet-stream";
};

QString halves() {
    const char16_t units[] = {u'a', 0xD83D, u'b', 0xDE00, u'c', 0xD83D};
    return QString::fromUtf16(units, 6);
}

std::string everyByte() {
    std::string bytes;
    for (int byte = 0; byte < 1000; ++byte) {
        bytes += static_cast<char>(byte % 256);
    }
    return bytes;
}

std::vector<Hard> hardLetters() {
    const std::string nul("\0\r\n", 3);
    const QString family = QStringLiteral("\U0001F468\u200D\U0001F469\u200D\U0001F467");
    return {
        {"Plain", QStringLiteral("Hello"), QStringLiteral("Bob"), QStringLiteral("Hello\n.\n..\nFrom me\n"),
         QStringLiteral("report.pdf"), "%PDF-1.4\n", "application/pdf"},
        {"Western", QStringLiteral("Größe: 5 € für Zoë"), QStringLiteral("Müller, Jörg \"Jo\" (x)"),
         QStringLiteral("Größe = 5 €\n\ttab \n"), QStringLiteral("Prüfung \"1\"; 50%.pdf"), everyByte(),
         "application/pdf"},
        {"Emoji", (family + QStringLiteral("\U0001F600 ")).repeated(30), QStringLiteral("\U0001F600 Bob"),
         family.repeated(400), QStringLiteral("\U0001F600.bin"), nul},
        {"Combining", QStringLiteral("e\u0301\u0323").repeated(60), QStringLiteral("Zoe\u0308"),
         u'a' + QString(3'000, QChar(0x0301)), QStringLiteral("re\u0301sume\u0301.bin"),
         std::string("\0\xff", 2)},
        {"RightToLeft", QStringLiteral("שלום עולם, مرحبا بالعالم").repeated(3), QStringLiteral("דוד, בן"),
         QStringLiteral("שלום\nمرحبا abc 123\n"), QStringLiteral("שלום.bin"), nul},
        {"Japanese", QStringLiteral("日本語の件名、とても長いもの").repeated(10), QStringLiteral("山田 太郎"),
         QStringLiteral("日本語の本文。\n").repeated(50),
         QStringLiteral("日本語の長い名前").repeated(5) + QStringLiteral(".bin"), nul},
        // Python shows a space between the encoded words of a name, so a long one has spaces of its own.
        {"TenThousand",
         QStringLiteral("0123456789 äöüß ").repeated(625),
         QStringLiteral("Zoë Müller ").repeated(20) + u'x',
         QStringLiteral("x").repeated(10'000) + QStringLiteral("\n") + QStringLiteral("ö").repeated(10'000),
         {},
         {}},
        {"LongAsciiWord",
         QStringLiteral("x").repeated(10'000),
         QStringLiteral("Bob"),
         QStringLiteral("=").repeated(2'000),
         {},
         {}},
        {"Halves", halves(), halves(), halves() + QStringLiteral("\nend"), {}, {}},
        // The program decodes encoded words in a name of the RFC 2231 form too, so the file has none.
        {"LikeAnEncodedWord", QStringLiteral("=?utf-8?Q?typed?= =?utf-8?B?eA==?="),
         QStringLiteral("=?utf-8?Q?x?="), QStringLiteral("=?utf-8?Q?x?= =3D =\n= \n"),
         QStringLiteral("=3D_=x?=.bin"), nul},
        // Python joins spaces in names, so only the subject and the text have two together.
        {"Spaces", QStringLiteral(" two  spaces and\ta tab "), QStringLiteral("A B"),
         QStringLiteral("  leading\ntrailing  \n\n\n"), QStringLiteral("a b .bin"), nul},
        {"LikeABoundary", QStringLiteral("--=_0123456789abcdef"), QStringLiteral("--x--"),
         QStringLiteral("--=_0123456789abcdef0123456789abcdef\n--\n--x--\n"), QStringLiteral("--.bin"),
         nul + "--=_0123456789abcdef0123456789abcdef--\r\n"},
        {"Empty", QStringLiteral("x"), {}, {}, QStringLiteral("empty.bin"), {}},
        {"AsciiNameInQuotes", QStringLiteral("Re: [list] \"x\" (y); z"),
         QStringLiteral("O'Neil, \"B\" \\ (c)"), QStringLiteral("x"), QStringLiteral("it's (1).bin"), nul},
        {"TextFile", QStringLiteral("notes"), QStringLiteral("Bob"), QStringLiteral("x"),
         QStringLiteral("notes.txt"),
         "line\nGr\xc3\xb6\xc3\x9f"
         "e\r\nend",
         "text/plain"},
        {"LongFileName", QStringLiteral("long"), QStringLiteral("Bob"), QStringLiteral("x"),
         QStringLiteral("ö").repeated(120) + QStringLiteral(".bin"), nul},
    };
}

std::string digits(const QString& text) {
    // What a half of a surrogate pair becomes is the writer's own decision.
    const QByteArray bytes = QByteArray::fromStdString(StandardWriter().bytesOf(text));
    return bytes.isEmpty() ? "-" : bytes.toHex().toStdString();
}

std::string digits(const std::string& bytes) {
    return bytes.empty() ? "-" : QByteArray::fromStdString(bytes).toHex().toStdString();
}

QString quoted(QString name) {
    name.replace(u'\\', QStringLiteral("\\\\")).replace(u'"', QStringLiteral("\\\""));
    return u'"' + name + u'"';
}

/** What a reader tells of a letter: all of it, or what the program shows, which has no Cc and no types. */
enum class Told { All, WhatTheProgramShows };

/** What a reader is to print of the letter. */
std::string expected(const Hard& letter, Told told = Told::All) {
    QString text = letter.text;
    if (text.endsWith(u'\n')) {
        text.chop(1);
    }
    const bool all = told == Told::All;
    std::string lines = "message\nsubject " + digits(letter.subject) + '\n';
    if (all) {
        lines += "from - " + digits(QStringLiteral("ann@example.org")) + "\nto " +
                 digits(letter.displayName) + ' ' + digits(QStringLiteral("bob@xn--bcher-kva.example")) +
                 "\ncc - " + digits(QStringLiteral("carl@example.org")) + '\n';
    }
    lines += "text " + digits(text) + '\n';
    if (!letter.fileName.isEmpty()) {
        lines += "file " + (all ? letter.type + ' ' : std::string()) + digits(letter.fileName) + ' ' +
                 digits(letter.content) + '\n';
    }
    return lines;
}

/** The same of what the program has read. */
std::string readByProgram(const StandardMessage& message) {
    QString text = QString::fromStdString(message.text);
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    if (text.endsWith(u'\n')) {
        text.chop(1);
    }
    std::string lines =
        "message\nsubject " + digits(message.fields.subject) + "\ntext " + digits(text) + '\n';
    for (const StandardAttachment& attachment : message.attachments) {
        std::string content;
        standardReader().decode(attachment, [&content](std::string_view bytes) { content += bytes; });
        lines += "file " + digits(attachment.name) + ' ' + digits(content) + '\n';
    }
    return lines;
}

/** Both texts from shortly before their first difference on, for reading; empty for equal ones. */
std::string difference(const std::string& read, const std::string& wanted) {
    if (read == wanted) {
        return {};
    }
    const auto [one, other] = std::mismatch(read.begin(), read.end(), wanted.begin(), wanted.end());
    const auto at = static_cast<std::size_t>(one - read.begin());
    const std::size_t line = at == 0 ? 0 : read.rfind('\n', at - 1) + 1;
    const std::size_t begin = std::max(line, at < 40 ? 0 : at - 40);
    return read.substr(line, 8) + "... " + read.substr(begin, 120) + "\ninstead of " +
           wanted.substr(begin, 120);
}

/** The encoded file, made without the program's own encoder. */
std::string encodedFile(const std::string& content, std::string_view closingLine) {
    const QByteArray text = QByteArray::fromStdString(content).toBase64();
    std::string lines;
    for (qsizetype at = 0; at < text.size(); at += 76) {
        lines += text.mid(at, 76).toStdString() + "\r\n";
    }
    return lines + std::string(closingLine);
}

std::string onTheWire(const std::string& message) {
    std::string wire;
    smtplib::WireText text;
    text.add(message, wire);
    text.finish(wire);
    return wire;
}

class WrittenMail : public testing::Test {
  protected:
    WrittenMail() { support::application(); }

    std::string written(const Hard& hard, bool eightBitOffered) {
        const StandardWriter writer;
        QString typed = hard.text;
        Letter letter{writer.bytesOf(typed.replace(u'\n', QStringLiteral("\r\n"))), {}, {}};
        if (!hard.fileName.isEmpty()) {
            folder.write(StandardWriter().bytesOf(hard.fileName), hard.content);
            letter.attachment = QStringLiteral("C:\\") + hard.fileName;
        }
        std::string file;
        const ComposedMessage composed =
            writer.compose(letter, [&](const QString&, std::string_view closingLine) {
                file = encodedFile(hard.content, closingLine);
                return EncodedFile{};
            });
        smtplib::Message fields;
        fields.sender = "ann@example.org";
        const QString bob = QStringLiteral("bob@bücher.example");
        fields.recipients = writer.bytesOf(
            hard.displayName.isEmpty() ? bob : quoted(hard.displayName) + QStringLiteral(" <") + bob + u'>');
        fields.copies = "carl@example.org";
        fields.subject = writer.bytesOf(hard.subject);
        fields.messageId = "<1@example.org>";
        smtplib::Extensions offered;
        offered.eightBit = eightBitOffered;
        const smtplib::PreparedMessage prepared =
            composed.form(fields, offered, QDateTime::currentDateTime());
        return onTheWire(prepared.header + *prepared.body + file);
    }

    /** What the program prints of the messages; each begins with "message". */
    static std::vector<std::string> readBy(const QString& program, const QStringList& files) {
        QProcess reader;
        reader.start(program, files);
        EXPECT_TRUE(reader.waitForFinished(kPatienceMs)) << reader.errorString().toStdString();
        EXPECT_EQ(reader.exitCode(), 0) << reader.readAllStandardError().toStdString();
        std::vector<std::string> messages;
        for (const QByteArray& line : reader.readAllStandardOutput().split('\n')) {
            if (line == "message") {
                messages.emplace_back();
            }
            if (!messages.empty() && !line.isEmpty()) {
                messages.back() += line.toStdString() + '\n';
            }
        }
        return messages;
    }

    static QString script(const char* name) {
        return QString::fromStdString(support::dataFolder() + "/../readers/" + name);
    }

    static bool runs(const QString& program, const QStringList& arguments) {
        QProcess process;
        process.start(program, arguments);
        return process.waitForFinished(kPatienceMs) && process.exitCode() == 0;
    }

    void expectReadAlikeBy(const QString& program) {
        const std::vector<Hard> letters = hardLetters();
        for (const bool eightBitOffered : {false, true}) {
            QStringList files;
            for (const Hard& letter : letters) {
                const std::string name = std::string(letter.name) + (eightBitOffered ? "8" : "7");
                files.append(
                    QString::fromStdString(messages.write(name, written(letter, eightBitOffered)).string()));
            }
            const std::vector<std::string> read = readBy(program, files);
            ASSERT_EQ(read.size(), letters.size());
            for (std::size_t number = 0; number < letters.size(); ++number) {
                EXPECT_EQ(difference(read[number], expected(letters[number])), "")
                    << letters[number].name << (eightBitOffered ? " in 8 bits" : " in 7 bits");
            }
        }
    }

    support::TemporaryFolder folder;
    support::TemporaryFolder messages;
    support::DriveStandsFor drive{'C', folder.qtPath(".")};
};

TEST_F(WrittenMail, IsReadByPythonsEmailPackageAsItWasTyped) {
    if (!runs(QStringLiteral("python3"), {QStringLiteral("-c"), QStringLiteral("import email.policy")})) {
        GTEST_SKIP() << "there is no python3";
    }
    expectReadAlikeBy(script("email_package"));
}

TEST_F(WrittenMail, IsReadByGMimeAsItWasTyped) {
    expectReadAlikeBy(QString::fromStdString(support::buildFolder() + "/tests/gmime_reader"));
}

TEST_F(WrittenMail, IsReadByTheProgramItselfAsItWasTyped) {
    for (const Hard& letter : hardLetters()) {
        for (const bool eightBitOffered : {false, true}) {
            const std::string message = written(letter, eightBitOffered);
            const std::size_t end = message.find("\r\n\r\n") + 2;
            const std::string body = message.substr(end + 2);
            const StandardMessage read = standardReader().read(message.substr(0, end), body);
            EXPECT_EQ(difference(readByProgram(read), expected(letter, Told::WhatTheProgramShows)), "")
                << letter.name << (eightBitOffered ? " in 8 bits" : " in 7 bits");
        }
    }
}

TEST_F(WrittenMail, IsReadByPerlsMimeToolsAsItWasTyped) {
    if (!runs(QStringLiteral("perl"), {QStringLiteral("-MMIME::Parser"), QStringLiteral("-e1")})) {
        GTEST_SKIP() << "there are no MIME::Tools (libmime-tools-perl)";
    }
    expectReadAlikeBy(script("mime_tools"));
}
} // namespace
