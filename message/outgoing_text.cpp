#include "message/outgoing_text.h"

#include "components/smtplib/wire_text.h"
#include "platform/text.h"

#include <algorithm>

namespace {
constexpr std::string_view kCrLf = "\r\n";

bool isBeyondAscii(char byte) noexcept {
    return static_cast<unsigned char>(byte) >= 0x80;
}

bool continuesCharacter(char byte) noexcept {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

bool hasBeyondAscii(std::string_view bytes) {
    // No early return: without one, the compiled loop checks many bytes at once.
    unsigned all = 0;
    for (const char byte : bytes) {
        all |= static_cast<unsigned char>(byte);
    }
    return all >= 0x80U;
}

/** Text in UTF-8, every line end CR LF, without NUL. */
std::string canonical(std::string_view text) {
    std::string lines;
    lines.reserve(text.size());
    while (!text.empty()) {
        const std::size_t plain = std::min(text.find_first_of(std::string_view("\r\n\0", 3)), text.size());
        lines += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.starts_with('\r') || text.starts_with('\n')) {
            lines += kCrLf;
        }
        text.remove_prefix(text.starts_with(kCrLf) ? 2 : std::min<std::size_t>(text.size(), 1));
    }
    return hasBeyondAscii(lines) ? platform::toBytes(platform::fromBytes(lines)) : lines;
}

/** Quoted-printable of one line, which is cut softly into lines of 76 characters. */
class QuotedLine {
  public:
    explicit QuotedLine(std::string& output) : output_(output) {}

    /** The bytes of one character. */
    void add(std::string_view character, bool isLastOfLine) {
        const char first = character.front();
        const bool space = first == ' ' || first == '\t';
        const bool plain = character.size() == 1 && first != '=' && first >= ' ' && first <= '~';
        std::string text;
        if ((plain && !space) || (space && !isLastOfLine)) {
            text = first;
        } else {
            for (const char byte : character) {
                constexpr std::string_view digits = "0123456789ABCDEF";
                const auto value = static_cast<unsigned char>(byte);
                text += {'=', digits[value >> 4U], digits[value & 15U]};
            }
        }
        constexpr std::size_t mostCharacters = 76;
        // A soft break takes one character more, but the end of the line does not.
        if (used_ + text.size() > mostCharacters - (isLastOfLine ? 0 : 1)) {
            output_ += "=\r\n";
            used_ = 0;
        }
        output_ += text;
        used_ += text.size();
    }

  private:
    std::string& output_;
    std::size_t used_ = 0;
};

void addQuotedLine(std::string_view line, std::string& output) {
    QuotedLine quoted(output);
    while (!line.empty()) {
        std::size_t bytes = 1;
        while (bytes < line.size() && bytes < 4 && isBeyondAscii(line.front()) &&
               continuesCharacter(line[bytes])) {
            ++bytes;
        }
        quoted.add(line.substr(0, bytes), bytes == line.size());
        line.remove_prefix(bytes);
    }
}
} // namespace

std::string_view nameOf(TransferForm form) noexcept {
    switch (form) {
    case TransferForm::SevenBit:
        return "7bit";
    case TransferForm::EightBit:
        return "8bit";
    case TransferForm::QuotedPrintable:
        return "quoted-printable";
    case TransferForm::Base64:
        break;
    }
    return "base64";
}

ByteTraits traitsOf(std::string_view bytes) {
    ByteTraits traits;
    traits.eightBit = hasBeyondAscii(bytes);
    const std::size_t lines = smtplib::bytesOfReadyLines(bytes);
    const std::string_view last = bytes.substr(lines);
    traits.readyLines = last.size() <= smtplib::kMaximumTextLineBytes &&
                        last.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
    return traits;
}

OutgoingText outgoingText(std::string_view text, bool eightBitOffered) {
    OutgoingText outgoing;
    outgoing.bytes = canonical(text);
    const ByteTraits traits = traitsOf(outgoing.bytes);
    outgoing.charset = traits.eightBit ? "utf-8" : "us-ascii";
    if (!traits.readyLines || (traits.eightBit && !eightBitOffered)) {
        outgoing.form = TransferForm::QuotedPrintable;
        outgoing.bytes = quotedPrintable(outgoing.bytes);
    } else if (traits.eightBit) {
        outgoing.form = TransferForm::EightBit;
    }
    return outgoing;
}

std::string quotedPrintable(std::string_view text) {
    std::string output;
    output.reserve(text.size() + text.size() / 2);
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(kCrLf), text.size());
        addQuotedLine(text.substr(0, end), output);
        text.remove_prefix(end);
        if (text.starts_with(kCrLf)) {
            output += kCrLf;
            text.remove_prefix(kCrLf.size());
        }
    }
    return output;
}
