#include "tests/support/reference_parser.h"

#include "components/netcodelib/leading_fields.h"
#include "platform/runtime_error.h"

#include <algorithm>

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

bool isBlank(char character) {
    return character == ' ' || character == '\t' || character == '\r';
}

/** A name of printable characters, a colon, and then the line's end or a blank. */
bool isField(const std::string& line) {
    const std::size_t colon = line.find(':');
    if (colon == std::string::npos || colon == 0) {
        return false;
    }
    const std::string name = line.substr(0, colon);
    const bool printable = std::all_of(name.begin(), name.end(),
                                       [](char character) { return character > ' ' && character <= '~'; });
    return printable && (colon + 1 == line.size() || isBlank(line[colon + 1]));
}

/** Encoded text begins behind the header lines that are left before it. */
std::string withoutLeadingFields(std::string text) {
    bool fieldSeen = false;
    while (!text.empty()) {
        const std::size_t lineFeed = text.find('\n');
        const std::string line = text.substr(0, lineFeed);
        if (line.size() > NetCodeLib::LeadingFields::kMaximumLineBytes) {
            return text;
        }
        std::string behind = lineFeed == std::string::npos ? "" : text.substr(lineFeed + 1);
        if (std::all_of(line.begin(), line.end(), isBlank)) {
            if (fieldSeen) {
                return behind;
            }
        } else if (isField(line)) {
            fieldSeen = true;
        } else if (!fieldSeen || !isBlank(line.front())) {
            return text;
        }
        text = behind;
    }
    return text;
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

FoundAttachment decoded(FoundAttachment attachment) {
    const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::string text = withoutLeadingFields(attachment.encoded + "\r\n");
    std::string bits;
    for (const char character : text.substr(0, text.find('='))) {
        const std::size_t value = alphabet.find(character);
        for (std::size_t bit = 32; value != std::string::npos && bit > 0; bit /= 2) {
            bits += (value & bit) != 0 ? '1' : '0';
        }
    }
    attachment.content.clear();
    if (bits.size() % 24 == 6) {
        attachment.error = errors::EncodedTextCut;
        return attachment;
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
    for (FoundAttachment& attachment : result.attachments) {
        attachment = decoded(std::move(attachment));
    }
    return result;
}

} // namespace support::reference
