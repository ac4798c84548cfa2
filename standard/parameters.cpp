#include "standard/parameters.h"

#include "standard/charset_decoder.h"
#include "standard/encoded_words.h"
#include "standard/header_fields.h"
#include "standard/hexadecimal.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

namespace standard {

namespace {
constexpr std::string_view kBlanks = " \t\r\n";

/** A parameter as it stands in the field, cut into its name and value. */
struct Piece {
    /** In lower case, without what RFC 2231 puts behind it. */
    std::string name;
    std::string value;
    /** The number of the piece among those of one value; nothing for a value in one piece. */
    std::optional<int> number;
    /** Its value has percent signs (RFC 2231 section 4). */
    bool encoded = false;
};

/** Reads a field from its start to its end. */
class Scanner {
  public:
    explicit Scanner(std::string_view text) : rest_(text) {}

    bool atEnd() const noexcept { return rest_.empty(); }

    /** The next character; only before the end. */
    char front() const noexcept { return rest_.front(); }

    void drop(std::size_t count) { rest_.remove_prefix(std::min(count, rest_.size())); }

    /** Passes over blanks and comments; comments nest (RFC 5322 section 3.2.2). */
    void skipBlanks() {
        while (!atEnd() && (kBlanks.find(front()) != std::string_view::npos || front() == '(')) {
            if (front() == '(') {
                skipComment();
            } else {
                drop(1);
            }
        }
    }

    /** What stands before the first of these characters, which stays. */
    std::string_view upTo(std::string_view characters) {
        const std::string_view taken = rest_.substr(0, rest_.find_first_of(characters));
        drop(taken.size());
        return taken;
    }

    /** The text between quotes; up to the next semicolon when the second quote is missing. */
    std::string quoted() {
        drop(1);
        std::string text;
        for (std::size_t at = 0; at < rest_.size(); ++at) {
            const bool escapes =
                rest_[at] == '\\' && at + 1 < rest_.size() && (rest_[at + 1] == '"' || rest_[at + 1] == '\\');
            if (rest_[at] == '"') {
                drop(at + 1);
                return text;
            }
            at += escapes ? 1 : 0;
            text.push_back(rest_[at]);
        }
        return std::string(trimmed(upTo(";")));
    }

  private:
    void skipComment() {
        int depth = 0;
        std::size_t at = 0;
        for (; at < rest_.size(); ++at) {
            depth += rest_[at] == '(' ? 1 : rest_[at] == ')' ? -1 : 0;
            at += rest_[at] == '\\' ? 1 : 0;
            if (depth == 0) {
                break;
            }
        }
        drop(at + 1);
    }

    std::string_view rest_;
};

/** Cuts RFC 2231's asterisks and number off the name. */
void readName(std::string_view name, Piece& piece) {
    piece.encoded = name.ends_with('*');
    if (piece.encoded) {
        name.remove_suffix(1);
    }
    const std::size_t asterisk = name.find('*');
    if (asterisk != std::string_view::npos) {
        const std::string_view digits = name.substr(asterisk + 1);
        int number = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
        if (error == std::errc() && end == digits.data() + digits.size() && number >= 0) {
            piece.number = number;
            name = name.substr(0, asterisk);
        }
    }
    piece.name = lowerCase(name);
}

/** A value without quotes, up to the semicolon. File names keep their parentheses: few mean comments. */
std::string unquotedValue(Scanner& scanner, const std::string& name) {
    std::string_view value = trimmed(scanner.upTo(";"));
    if (name != "filename" && name != "name") {
        const std::size_t comment = std::min(value.find(" ("), value.find("\t("));
        value = trimmed(value.substr(0, comment));
    }
    return std::string(value);
}

std::optional<Piece> nextPiece(Scanner& scanner) {
    const std::string_view name = scanner.upTo("=;");
    if (scanner.atEnd() || scanner.front() == ';') {
        return std::nullopt;
    }
    scanner.drop(1);
    Piece piece;
    readName(trimmed(name.substr(0, name.find('('))), piece);
    const bool isName = piece.name == "filename" || piece.name == "name";
    scanner.skipBlanks();
    if (!scanner.atEnd() && scanner.front() == '"') {
        piece.value = scanner.quoted();
        scanner.upTo(";");
    } else {
        piece.value = unquotedValue(scanner, piece.name);
    }
    return piece.name.empty() || (piece.value.empty() && isName) ? std::nullopt : std::optional(piece);
}

std::string withoutPercents(std::string_view text) {
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const auto byte = text[at] == '%' ? byteOfDigits(text.substr(at + 1)) : std::nullopt;
        bytes.push_back(byte.value_or(text[at]));
        at += byte ? 2 : 0;
    }
    return bytes;
}

/** Takes the charset and the language, charset'language'text, off the first piece; empty when there is none.
 */
std::string takeCharset(std::string& value) {
    const std::size_t first = value.find('\'');
    const std::size_t second = first == std::string::npos ? first : value.find('\'', first + 1);
    if (second == std::string::npos) {
        return {};
    }
    std::string charset = value.substr(0, first);
    value.erase(0, second + 1);
    return charset;
}

/** Puts the pieces of one value together, in the order of their numbers. */
Parameter joined(std::vector<Piece> pieces) {
    std::stable_sort(pieces.begin(), pieces.end(), [](const Piece& one, const Piece& other) {
        return one.number.value_or(0) < other.number.value_or(0);
    });
    Parameter parameter{pieces.front().name, {}, pieces.front().encoded || pieces.front().number};
    const std::string charset = pieces.front().encoded ? takeCharset(pieces.front().value) : std::string();
    std::string bytes;
    for (const Piece& piece : pieces) {
        bytes += piece.encoded ? withoutPercents(piece.value) : piece.value;
    }
    // Encoded words stand as they are written where they are meant; behind percent signs they are the name's
    // own letters.
    const bool holdsWords = std::any_of(pieces.begin(), pieces.end(), [](const Piece& piece) {
        return piece.value.find("=?") != std::string::npos;
    });
    parameter.value = holdsWords ? decodedText(toUtf8(bytes, charset)) : toUtf8(bytes, charset);
    return parameter;
}
} // namespace

StructuredField::StructuredField(std::string_view field) {
    Scanner scanner(field);
    scanner.skipBlanks();
    // A value may be missing, so that the field begins with a parameter.
    const std::string_view beginning = field.substr(0, field.find(';'));
    if (beginning.find('=') == std::string_view::npos) {
        const std::string_view value = scanner.upTo(";(");
        value_ = lowerCase(trimmed(value));
        std::erase_if(value_, [](char letter) { return kBlanks.find(letter) != std::string_view::npos; });
        scanner.upTo(";");
    } else {
        const std::string_view value = trimmed(scanner.upTo("; \t\r\n="));
        if (!scanner.atEnd() && scanner.front() == '=') {
            scanner = Scanner(field);
        } else {
            value_ = lowerCase(value);
        }
    }
    std::vector<Piece> pieces;
    while (!scanner.atEnd() && pieces.size() < kMaximumParameters) {
        scanner.skipBlanks();
        if (!scanner.atEnd() && scanner.front() == ';') {
            scanner.drop(1);
        } else if (auto piece = nextPiece(scanner)) {
            pieces.push_back(std::move(*piece));
        }
    }
    for (auto& piece : pieces) {
        if (piece.name.empty()) {
            continue;
        }
        std::vector<Piece> ofOneValue{piece};
        if (piece.number) {
            const std::string name = piece.name;
            ofOneValue.clear();
            for (Piece& other : pieces) {
                if (other.number && other.name == name) {
                    ofOneValue.push_back(std::exchange(other, Piece()));
                }
            }
        }
        parameters_.push_back(joined(std::move(ofOneValue)));
    }
}

const Parameter* StructuredField::parameter(std::string_view name) const {
    const auto find = [&](bool extended) {
        return std::find_if(parameters_.begin(), parameters_.end(), [&](const Parameter& parameter) {
            return parameter.name == name && parameter.extended == extended;
        });
    };
    auto found = find(true);
    found = found == parameters_.end() ? find(false) : found;
    return found == parameters_.end() ? nullptr : &*found;
}

std::string_view StructuredField::textOf(std::string_view name) const {
    const Parameter* const found = parameter(name);
    return found == nullptr ? std::string_view() : std::string_view(found->value);
}

} // namespace standard
