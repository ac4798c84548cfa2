#include "standard/entity.h"

#include "standard/transfer_decoder.h"

namespace standard {

namespace {
/** The next line from `start` on, with its line end. */
std::string_view lineAt(std::string_view text, std::size_t start) {
    const std::size_t end = text.find('\n', start);
    return text.substr(start, end == std::string_view::npos ? end : end + 1 - start);
}

/** Where the next line begins that starts with two hyphens, at or after `start`, which begins a line. */
std::size_t nextHyphens(std::string_view text, std::size_t start) {
    if (text.substr(start).starts_with("--")) {
        return start;
    }
    const std::size_t found = text.find("\n--", start);
    return found == std::string_view::npos ? found : found + 1;
}

/** What a line is to a boundary. */
enum class Delimiter { None, Between, Closing };

Delimiter delimiterOf(std::string_view line, std::string_view boundary) {
    line.remove_prefix(2);
    if (!line.starts_with(boundary)) {
        return Delimiter::None;
    }
    line.remove_prefix(boundary.size());
    const bool closes = line.starts_with("--");
    line.remove_prefix(closes ? 2 : 0);
    if (!trimmed(line).empty()) {
        return Delimiter::None;
    }
    return closes ? Delimiter::Closing : Delimiter::Between;
}

std::vector<std::string_view> cutAt(std::string_view body, std::string_view boundary, std::size_t most) {
    std::vector<std::string_view> parts;
    constexpr std::size_t none = std::string_view::npos;
    std::size_t partFrom = none;
    std::size_t at = nextHyphens(body, 0);
    while (at != std::string_view::npos) {
        const std::string_view line = lineAt(body, at);
        const Delimiter delimiter = delimiterOf(line, boundary);
        if (delimiter != Delimiter::None && parts.size() + 1 < most) {
            if (partFrom != none) {
                // The line end before a boundary belongs to the boundary.
                parts.push_back(withoutLineEnd(body.substr(partFrom, at - partFrom)));
                partFrom = none;
            }
            // Behind the closing line there is nothing, unless an inner multipart has the same boundary.
            if (delimiter == Delimiter::Between) {
                partFrom = at + line.size();
            }
        }
        at = nextHyphens(body, at + line.size());
    }
    if (partFrom != none) {
        parts.push_back(body.substr(partFrom));
    }
    return parts;
}

/** The boundary that a body without a known one seems to have; empty for none. */
std::string_view guessedBoundary(std::string_view body) {
    constexpr std::size_t longest = 1'000;
    constexpr std::string_view field = "content-";
    for (std::size_t at = nextHyphens(body, 0); at != std::string_view::npos;) {
        const std::string_view line = lineAt(body, at);
        const std::string_view next = lineAt(body, at + line.size());
        const std::string_view boundary = trimmed(line.substr(2));
        if (!boundary.empty() && boundary.size() <= longest &&
            sameWord(next.substr(0, field.size()), field)) {
            return boundary;
        }
        at = nextHyphens(body, at + line.size());
    }
    return {};
}
} // namespace

Entity::Entity(std::string_view bytes, const std::string& defaultType) {
    const HeaderFields header(bytes, OddLines::BeginTheBody);
    content_ = bytes.substr(header.bodyAt());
    read(header, defaultType);
}

Entity::Entity(const HeaderFields& header, std::string_view body) : content_(body) {
    read(header, "text/plain");
}

void Entity::read(const HeaderFields& header, const std::string& defaultType) {
    typeField_ = StructuredField(header.first("Content-Type").value_or(defaultType));
    const std::string& given = typeField_.value();
    const std::size_t slash = given.find('/');
    const bool isType = slash != std::string::npos && slash > 0 && slash + 1 < given.size() &&
                        given.find('/', slash + 1) == std::string::npos;
    type_ = isType ? given : defaultType;
    disposition_ = StructuredField(header.first("Content-Disposition").value_or(std::string()));
    encoding_ = transferEncodingOf(header.first("Content-Transfer-Encoding").value_or(std::string()));
    std::string id = header.first("Content-ID").value_or(std::string());
    std::erase_if(id, [](char letter) { return letter == '<' || letter == '>' || letter == ' '; });
    contentId_ = std::move(id);
}

bool Entity::isAttached() const {
    return !disposition_.value().empty() && disposition_.value() != "inline";
}

std::string Entity::name() const {
    const auto given = [](const Parameter* parameter) {
        return parameter != nullptr && !trimmed(parameter->value).empty() ? parameter : nullptr;
    };
    const Parameter* const fileName = given(disposition_.parameter("filename"));
    const Parameter* const name = given(typeField_.parameter("name"));
    const Parameter* chosen = fileName != nullptr ? fileName : name;
    if (name != nullptr && name->extended && !chosen->extended) {
        chosen = name;
    }
    return chosen == nullptr ? std::string() : std::string(trimmed(chosen->value));
}

std::vector<std::string_view> partsOf(const Entity& multipart, std::size_t most) {
    const std::string_view body = multipart.content();
    const std::string_view boundary = multipart.typeField().textOf("boundary");
    std::vector<std::string_view> parts;
    if (!boundary.empty()) {
        parts = cutAt(body, boundary, most);
    }
    if (parts.empty()) {
        const std::string_view guessed = guessedBoundary(body);
        parts = guessed.empty() ? parts : cutAt(body, guessed, most);
    }
    return parts;
}

} // namespace standard
