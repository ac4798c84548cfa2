#include "tests/support/generated_message.h"

#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <random>
#include <string_view>

namespace support {

namespace {
using namespace std::string_view_literals;

class Maker {
  public:
    explicit Maker(unsigned seed) : generator_(seed) {}

    std::string message() {
        const std::string boundary = anyBoundary();
        return header(boundary) + lineEnd() + body(boundary);
    }

  private:
    // The generator's own numbers are the same everywhere; the standard library's distributions are not.
    std::size_t below(std::size_t limit) { return generator_() % limit; }

    /** True once in so many times. */
    bool onceIn(std::size_t times) { return below(times) == 0; }

    std::string oneOf(std::initializer_list<std::string_view> texts) {
        return std::string(*std::next(texts.begin(), static_cast<std::ptrdiff_t>(below(texts.size()))));
    }

    std::string lineEnd() { return onceIn(40) ? "\n" : "\r\n"; }

    std::string line(const std::string& text) { return text + lineEnd(); }

    std::string anyBoundary() {
        if (onceIn(25)) {
            return std::string(10'000, 'b') + "end";
        }
        if (onceIn(12)) {
            return oneOf({"a", "name=", ";", "\""});
        }
        return oneOf({"cut", "B0", "=_part 1", "----=_Next", "\xff\xfe"});
    }

    /** A parameter with a value that should stand in quotes, and mostly does. */
    std::string parameter(std::string_view name, const std::string& value) {
        const std::string start = std::string(name) + '=';
        switch (below(50)) {
        case 0:
            return start + value;
        case 1:
            return start + '"' + value;
        case 2:
            return start + value + '"';
        case 3:
            return start + value + "; x=\"" + value + '"';
        case 4:
            return start + "\"\"";
        case 5:
            return start + '\'' + value + '\'';
        default:
            return start + '"' + value + '"';
        }
    }

    std::string header(const std::string& boundary) {
        std::string text;
        const std::size_t lines = below(6);
        for (std::size_t number = 0; number < lines; ++number) {
            text += line(oneOf({"From: Ann <a@example.org>", "from:b", "FROM:  \"A <a>\" <b>", "Subject: x",
                                "subject:", "Date: today", "no colon", ": no name", "X-Y: boundary=\"z\"",
                                "Subject: \x1b$B%F\x1b(B", "From: =?utf-8?Q?a=00b=0Ac?="}));
            text += onceIn(6) ? line(oneOf({" folded", "\tfolded; boundary=\"f\"", " \"quoted\""})) : "";
        }
        if (onceIn(20)) {
            return text;
        }
        if (onceIn(12)) {
            return text + line("Content-Type: multipart/mixed; boun") +
                   line("Content-Type: dary=\"" + boundary + '"');
        }
        text += oneOf({"Content-Type: ", "content-type:", "CONTENT-TYPE: "}) + "multipart/mixed;" +
                (onceIn(8) ? " charset=\"x\";" : "") + (onceIn(3) ? "\r\n\t" : " ");
        text += line(parameter(onceIn(30) ? "Boundary" : "boundary", boundary));
        return onceIn(10) ? text + line(" and more \"") : text;
    }

    std::string body(const std::string& boundary) {
        std::string text = onceIn(3) ? line("preamble Content-Type: text/plain; name=") : "";
        // Among many parts one that cannot be opened would hide those behind it.
        const bool many = onceIn(8);
        const std::size_t parts = many ? 19 + below(5) : 1 + below(5);
        for (std::size_t number = 0; number < parts; ++number) {
            // Now and then a boundary that another one begins, or one that begins it.
            text += line("--" + boundary + (onceIn(12) ? "1" : "")) +
                    (many ? harmlessPart(std::to_string(number)) : part(boundary));
        }
        text += onceIn(5) ? "" : line("--" + boundary + "--");
        return onceIn(3) ? text + line("epilogue") : text;
    }

    std::string harmlessPart(const std::string& number) {
        return onceIn(2) ? line("Content-Type: text/html; x") + lineEnd() + line(number)
                         : line("Content-Type: audio/x; name=\"" + number + '"') + line("QUJD");
    }

    std::string part(const std::string& outerBoundary) {
        switch (below(17)) {
        case 0:
        case 1:
        case 2:
        case 3:
        case 4:
            return typeLine(oneOf({"text/plain", "text/plain", "text/html", "text/enriched", "text/"}), "") +
                   otherHeaders() + lineEnd() + runningText();
        case 5:
        case 6:
        case 7:
        case 8:
        case 9:
        case 10:
            return attachment();
        case 11:
        case 12:
            return typeLine("message/rfc822", "") + lineEnd() + runningText();
        case 13:
        case 14:
        case 15:
            return alternative(outerBoundary);
        default:
            return otherHeaders() + lineEnd() + runningText();
        }
    }

    std::string typeLine(const std::string& type, const std::string& parameters) {
        const std::string name = onceIn(25) ? "content-type: " : "Content-Type: ";
        return line(name + type + (onceIn(40) ? "" : ";") + (parameters.empty() ? " charset=x" : parameters));
    }

    std::string otherHeaders() {
        return onceIn(3) ? line(oneOf({"Content-Transfer-Encoding: quoted-printable", "Content-ID: <1>",
                                       "Content-Disposition: inline; filename=\"f\"", "X: name=\"n\""}))
                         : "";
    }

    std::string attachment() {
        const std::string name = oneOf({"a.bin", "../x", "", "long name.pdf", "n\0l"sv, "\xe4"});
        const std::string type = oneOf({"application/pdf", "application", "audio/x", "video/x", "image/png"});
        return typeLine(type, (onceIn(4) ? "\r\n " : " ") + parameter("name", name)) +
               line("Content-Transfer-Encoding: " + oneOf({"base64", "quoted-printable", "7bit"})) +
               (onceIn(2) ? line("Content-Disposition: attachment; " + parameter("filename", name)) : "") +
               otherHeaders() + lineEnd() + encodedText();
    }

    std::string encodedText() {
        std::string text;
        const std::size_t lines = below(4);
        for (std::size_t number = 0; number < lines; ++number) {
            text += line(oneOf({"QUJDREVGR0hJSktMTU5P", "QUJD RA", "QQ==", "Q", "QUJDR", "Q*U-J+D", "=",
                                "QQ==QQ==", "See you: there", "name=", "/+9="}));
        }
        return text;
    }

    std::string alternative(const std::string& outerBoundary) {
        const std::string boundary =
            onceIn(5) ? outerBoundary : oneOf({"inner", "cut2", "i", "boundary", "in ner"});
        std::string text =
            typeLine("multipart/alternative", ' ' + parameter("boundary", boundary)) + lineEnd();
        const std::size_t parts = onceIn(10) ? 22 : below(4);
        for (std::size_t number = 0; number < parts; ++number) {
            text += line("--" + boundary) +
                    (onceIn(8) ? "" : typeLine(oneOf({"text/plain", "text/plain", "text/html"}), "")) +
                    lineEnd() + runningText();
        }
        return text + (onceIn(4) ? "" : line("--" + boundary + "--"));
    }

    std::string runningText() {
        std::string text;
        const std::size_t lines = below(5);
        for (std::size_t number = 0; number < lines; ++number) {
            text += line(oneOf({"Some words.", "his name= was", "filename=", "a Content-Type", "; \"quoted\"",
                                "Content-Disposition", "", ".dot", "na", "me=", "\0\x01"sv, "gr\xfc\xdf",
                                "\x1b$B%F%9%H\x1b(B", "\xed\xa0\x80", "lone \r return", "boundary=\"q\""}));
        }
        return text;
    }

    std::mt19937 generator_;
};
} // namespace

std::string generatedMessage(unsigned seed) {
    return Maker(seed).message();
}

} // namespace support
