#include "tests/support/reference_parser.h"

#include "components/netcodelib/base64_form.h"
#include "components/netcodelib/leading_fields.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <sstream>
#include <vector>

namespace support::reference {

namespace {
using platform::RuntimeError;
namespace errors = platform::errors;

/** 1-based, 0 when there is none. \throws RuntimeError 5 for a start before the text. */
long position(long start, const std::string& text, const std::string& wanted) {
    if (start < 1) {
        throw RuntimeError(errors::InvalidProcedureCall);
    }
    for (long at = start; at <= static_cast<long>(text.size()); ++at) {
        if (text.compare(static_cast<std::size_t>(at - 1), wanted.size(), wanted) == 0) {
            return at;
        }
    }
    return 0;
}

/** \throws RuntimeError 5 for a start before the text and for a negative length. */
std::string middle(const std::string& text, long start, long length) {
    if (start < 1 || length < 0) {
        throw RuntimeError(errors::InvalidProcedureCall);
    }
    std::string characters;
    for (long at = start; at < start + length && at <= static_cast<long>(text.size()); ++at) {
        characters += text[static_cast<std::size_t>(at - 1)];
    }
    return characters;
}

long lengthOf(const std::string& text) {
    return static_cast<long>(text.size());
}

/** Where no quote follows, the search for the second one begins at the text's start. */
std::string betweenQuotes(const std::string& text, long from) {
    const long first = position(from, text, "\"");
    const long second = position(first + 1, text, "\"");
    return middle(text, first + 1, second - first - 1);
}

/** In a part, unlike in the header, the first quote must stand behind the place. */
std::string betweenQuotesBehind(const std::string& text, long from) {
    if (position(from, text, "\"") == 0) {
        throw platform::RuntimeError(errors::InvalidProcedureCall);
    }
    return betweenQuotes(text, from);
}

std::string capitals(std::string text) {
    for (char& letter : text) {
        letter = letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    }
    return text;
}

void addLine(email::MessageSummary& summary, const std::string& line) {
    if (line.front() == ' ' || line.front() == '\t') {
        addHeaderLine(summary, "", line);
        return;
    }
    const std::size_t colon = line.find(':');
    if (colon == std::string::npos) {
        addHeaderLine(summary, line, "");
        return;
    }
    std::string value = line.substr(colon + 1);
    if (value.starts_with(' ') || value.starts_with('\t')) {
        value = value.substr(1);
    }
    addHeaderLine(summary, line.substr(0, colon), value);
}

void addLines(std::string_view message, email::MessageSummary& summary) {
    bool inBody = false;
    while (!message.empty()) {
        const std::size_t end = std::min(message.find("\r\n"), message.size());
        const std::string line(message.substr(0, end));
        message.remove_prefix(std::min(end + 2, message.size()));
        if (inBody) {
            summary.BodyText += line + "\r\n";
        } else if (line.empty()) {
            inBody = true;
        } else {
            addLine(summary, line);
        }
    }
}

/** One round of cutting: the text between two boundaries, and what its type line says. */
struct Cut {
    bool found = false;
    std::string part;
    long typeAt = 0;
};

/** Cuts the next part off the rest; the type keeps its value where the part has no type line. */
Cut cutNext(std::string& rest, const std::string& boundary, std::string& type) {
    const long start = position(1, rest, boundary) + lengthOf(boundary);
    const long end = position(start, rest, boundary);
    if (end == 0) {
        return {};
    }
    Cut cut{true, middle(rest, start, end - start), 0};
    cut.typeAt = position(1, cut.part, "Content-Type:");
    if (cut.typeAt != 0) {
        const long semicolon = position(cut.typeAt, cut.part, ";");
        type = middle(cut.part, cut.typeAt + 14, semicolon - (cut.typeAt + 14));
    }
    rest = middle(rest, end, lengthOf(rest));
    return cut;
}

void setOrAppend(std::string& text, const std::string& added) {
    text = text.empty() ? added : text + "\r\n" + added;
}

void takeAlternative(const std::string& part, std::string& text) {
    const long parameter = position(1, part, "boundary=");
    if (parameter == 0) {
        return;
    }
    const std::string boundary = betweenQuotesBehind(part, parameter);
    std::string rest = part;
    std::string type;
    for (int number = 1; number <= 20; ++number) {
        const Cut inner = cutNext(rest, boundary, type);
        if (!inner.found) {
            return;
        }
        if (type == "text/plain") {
            text = middle(inner.part, inner.typeAt, lengthOf(inner.part));
            text = strippedOnce(strippedOnce(text));
        }
    }
}

void parse(OpenedMessage& result) {
    std::string rest = result.summary.BodyText;
    std::string type;
    for (int number = 1; number <= 20; ++number) {
        const Cut cut = cutNext(rest, result.summary.Boundary, type);
        if (!cut.found) {
            return;
        }
        if (type == "text/html" || type == "text/plain") {
            setOrAppend(result.text, strippedOnce(middle(cut.part, cut.typeAt, lengthOf(cut.part))));
            result.text = strippedOnce(strippedOnce(result.text));
        }
        if (type.substr(0, 11) == "application" || type.substr(0, 5) == "audio" ||
            type.substr(0, 5) == "video" || type.substr(0, 5) == "image") {
            const std::string name = betweenQuotesBehind(cut.part, position(1, cut.part, "name="));
            result.summary.AttachmentName = name;
            result.attachments.push_back({name, strippedOnce(cut.part), {}, 0});
        }
        if (type.substr(0, 14) == "message/rfc822") {
            setOrAppend(result.text, strippedOnce(middle(cut.part, cut.typeAt, lengthOf(cut.part))));
        }
        if (type == "multipart/alternative") {
            takeAlternative(cut.part, result.text);
        }
    }
}

/** The lines of the text, without their line feeds and without the white space at their ends. */
std::vector<std::string> trimmedLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        const std::size_t first = std::min(line.find_first_not_of(" \t\r"), line.size());
        lines.push_back(line.substr(first, line.find_last_not_of(" \t\r") + 1 - first));
    }
    return lines;
}

const std::string kFieldCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-";

bool isHeaderLine(const std::string& line) {
    const std::size_t nameEnd = line.find_first_not_of(kFieldCharacters);
    return line.size() <= netcodelib::LeadingFields::kMaximumLineBytes && !line.empty() &&
           (line.front() == ' ' || line.front() == '\t' ||
            (nameEnd != std::string::npos && nameEnd > 0 && line[nameEnd] == ':'));
}

/** What is left of the header goes; nothing when there is a header that is none. */
std::optional<std::string> withoutLeadingFields(std::string text) {
    for (bool inHeader = false; text.find('\n') != std::string::npos; inHeader = true) {
        const std::string line = text.substr(0, text.find('\n'));
        if (line.find_first_not_of(" \t\r") == std::string::npos) {
            return text;
        }
        if (!isHeaderLine(line)) {
            return inHeader ? std::nullopt : std::optional(text);
        }
        text.erase(0, line.size() + 1);
    }
    return std::nullopt;
}

const std::string kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string lettersOf(const std::string& line) {
    std::string letters;
    std::copy_if(line.begin(), line.end(), std::back_inserter(letters),
                 [](char character) { return kAlphabet.find(character) != std::string::npos; });
    return letters;
}

/** The line's letters and padding, counted. */
std::size_t lengthWithin(const std::string& line) {
    return lettersOf(line).size() + static_cast<std::size_t>(std::count(line.begin(), line.end(), '='));
}

bool endsInBoundary(const std::string& line) {
    return line.ends_with("--") && !line.ends_with("---");
}

/** Cuts off what stands behind the padding, and the "--" of the next boundary; false when that cannot be. */
bool cutEnd(std::vector<std::string>& lines) {
    const auto padded = std::find_if(lines.begin(), lines.end(), [](const std::string& line) {
        return line.find('=') != std::string::npos;
    });
    if (padded != lines.end()) {
        const auto tail = std::find_if(padded + 1, lines.end(), [](const std::string& line) {
            return !line.empty() && lettersOf(line).empty() && line.find('=') == std::string::npos;
        });
        lines.erase(tail, lines.end());
    }
    while (!lines.empty() && lines.back().empty()) {
        lines.pop_back();
    }
    if (!lines.empty() && endsInBoundary(lines.back())) {
        if (lines.size() == 1 && lines.back() == "--") {
            return false;
        }
        lines.back().resize(lines.back().size() - 2);
    }
    std::erase(lines, "");
    return std::none_of(lines.begin(), lines.end(), endsInBoundary);
}

/** The letters and the padding of the lines; nothing when they are no base64 text. */
std::optional<std::string> base64Of(std::vector<std::string> lines) {
    if (!cutEnd(lines)) {
        return std::nullopt;
    }
    std::string text;
    std::size_t clean = 0;
    std::size_t disturbed = 0;
    bool groups = true;
    const std::size_t width = lines.empty() ? 0 : lengthWithin(lines.front());
    bool alike = width >= netcodelib::Base64Form::kLeastLineLetters;
    for (std::size_t index = 0; index < lines.size(); ++index) {
        const std::string& line = lines[index];
        const std::string letters = lettersOf(line);
        const std::string padding(line.substr(std::min(line.find('='), line.size())));
        const bool endsInPadding = padding.find_first_not_of('=') == std::string::npos;
        if (line == letters + padding && endsInPadding) {
            clean += letters.size() == width ? 1 : 0;
            text += line;
        } else if (padding.empty() && letters.size() == width &&
                   width >= netcodelib::Base64Form::kLeastLineLetters) {
            ++disturbed;
            text += letters;
        } else {
            return std::nullopt;
        }
        if (index + 1 < lines.size()) {
            groups = groups && lengthWithin(line) % 4 == 0;
            alike = alike && lengthWithin(line) == width;
        }
    }
    const std::size_t letters = std::min(text.find('='), text.size());
    const bool paddedOnce = text.find_first_not_of('=', letters) == std::string::npos;
    const bool whole = text.size() % 4 == 0 && letters % 4 != 1;
    const bool fewDisturbed = disturbed == 0 || disturbed < clean;
    return paddedOnce && whole && fewDisturbed && (groups || alike) ? std::optional(text) : std::nullopt;
}
} // namespace

void addHeaderLine(email::MessageSummary& summary, const std::string& field, const std::string& value) {
    summary.HeaderText += field + ": " + value + "\r\n";
    const std::string name = capitals(field);
    if (name == "CONTENT-TYPE") {
        summary.ContentType += value;
    }
    if (!summary.ContentType.empty() && field.empty()) {
        summary.ContentType += value;
    }
    if (const long parameter = position(1, summary.ContentType, "boundary="); parameter != 0) {
        summary.Boundary = betweenQuotes(summary.ContentType, parameter);
    }
    if (name == "SUBJECT") {
        summary.Subject = value;
    } else if (name == "FROM") {
        summary.From = value;
    } else if (name == "DATE") {
        summary.Date = value;
    }
}

std::string strippedOnce(std::string text) {
    for (const char* key :
         {"Content-Type", "Content-Transfer-Encoding", "Content-Disposition", "filename=", "name="}) {
        const long found = position(1, text, key);
        const long lineFeed = found == 0 ? 0 : position(found, text, "\n");
        text = middle(text, lineFeed + 1, lengthOf(text));
    }
    return text;
}

DecodedAttachment decoded(DecodedAttachment attachment) {
    attachment.content.clear();
    const auto encoded = withoutLeadingFields(attachment.encoded + "\r\n");
    const auto text = encoded ? base64Of(trimmedLines(*encoded)) : std::nullopt;
    if (!text) {
        attachment.error = errors::BadEncodedText;
        return attachment;
    }
    std::string bits;
    for (const char character : lettersOf(*text)) {
        const std::size_t value = kAlphabet.find(character);
        for (std::size_t bit = 32; bit > 0; bit /= 2) {
            bits += (value & bit) != 0 ? '1' : '0';
        }
    }
    attachment.error = 0;
    for (std::size_t at = 0; at + 8 <= bits.size(); at += 8) {
        attachment.content += static_cast<char>(std::stoi(bits.substr(at, 8), nullptr, 2));
    }
    return attachment;
}

OpenedMessage opened(std::string_view message) {
    OpenedMessage result;
    result.summary.Subject = "'";
    result.summary.Date = "':";
    result.error = platform::errorNumberOf([&] {
        addLines(message, result.summary);
        if (!result.summary.Boundary.empty()) {
            parse(result);
        }
    });
    for (DecodedAttachment& attachment : result.attachments) {
        attachment = decoded(std::move(attachment));
    }
    return result;
}

} // namespace support::reference
