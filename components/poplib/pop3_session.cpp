#include "components/poplib/pop3_session.h"

#include <utility>

namespace poplib {

namespace {
constexpr std::int64_t kLineEndBytes = 2;

bool isPartOfAuth(CommandKind kind) noexcept {
    return kind == CommandKind::Auth || kind == CommandKind::AuthResponse;
}

bool hasListingLines(CommandKind kind) noexcept {
    return kind == CommandKind::Uidl || kind == CommandKind::Capa || kind == CommandKind::ListAll;
}

bool hasMultiLineResponse(CommandKind kind) noexcept {
    return kind == CommandKind::Top || kind == CommandKind::Retr || hasListingLines(kind);
}

bool logsOn(CommandKind kind) noexcept {
    return kind == CommandKind::Pass || kind == CommandKind::Apop || isPartOfAuth(kind);
}

/** A listing asks for some lines only; a message that is opened is wanted whole. */
bool isListing(const Command& command) noexcept {
    return command.bodyLineLimit > 0 || hasListingLines(command.kind);
}

/** What follows the status word, or nothing when the line does not start with that word. */
std::optional<std::string_view> textAfter(std::string_view status, std::string_view line) {
    if (!line.starts_with(status)) {
        return std::nullopt;
    }
    line.remove_prefix(status.size());
    if (line.empty()) {
        return line;
    }
    if (line.front() != ' ') {
        return std::nullopt;
    }
    return line.substr(1);
}

HeaderLine headerLine(std::string_view line) {
    const auto isSpace = [](char character) { return character == ' ' || character == '\t'; };
    if (isSpace(line.front())) {
        return {{}, std::string(line), false};
    }
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) {
        return {std::string(line), {}, false};
    }
    std::string_view value = line.substr(colon + 1);
    std::string_view separator = ":";
    // One space after the colon is punctuation; any further one belongs to the value.
    if (!value.empty() && isSpace(value.front())) {
        separator = value.front() == ' ' ? ": " : ":\t";
        value.remove_prefix(1);
    }
    return {std::string(line.substr(0, colon)), std::string(value), false, separator};
}
} // namespace

std::string Pop3Session::takeOutput() {
    // A reply that no command had asked for must not be taken for the reply to the next command.
    const bool unasked = commands_.outstanding() == 0 && input_.size() > 0;
    // RFC 1939 section 4: the server speaks first.
    if (state_ == State::Greeting || state_ == State::Over || unasked) {
        spokeOutOfTurn_ = spokeOutOfTurn_ || (unasked && state_ != State::Greeting);
        commands_.holdOutput();
        return {};
    }
    return commands_.takeOutput();
}

void Pop3Session::receive(std::string_view bytes) {
    bytes_ += bytes.size();
    if (state_ != State::Over) {
        input_.append(bytes);
    }
}

std::optional<Pop3Session::Event> Pop3Session::nextEvent() {
    if (state_ == State::Over) {
        return std::nullopt;
    }
    return inResponse_ ? nextResponseLine() : nextReply();
}

std::optional<Pop3Session::Event> Pop3Session::nextReply() {
    if (state_ != State::Greeting && commands_.outstanding() == 0) {
        spokeOutOfTurn_ = spokeOutOfTurn_ || input_.size() > 0;
        return spokeOutOfTurn_ ? std::optional(fail(FailureKind::OutOfStep)) : std::nullopt;
    }
    const std::optional<std::string_view> line = input_.nextReplyLine();
    if (lineBytes(line) > kMaximumReplyBytes) {
        return fail(FailureKind::OutOfStep);
    }
    if (!line) {
        return std::nullopt;
    }
    if (const auto text = textAfter("+OK", *line)) {
        return accept(*text);
    }
    if (const auto text = textAfter("+", *line); text && awaitsAuth()) {
        ++answers_;
        return GoOn{commands_.takeFirst().kind, std::string(*text)};
    }
    const auto text = textAfter("-ERR", *line);
    if (!text || state_ == State::Greeting) {
        return fail(FailureKind::OutOfStep);
    }
    const CommandKind kind = commands_.takeFirst().kind;
    ++answers_;
    return Refused{kind, std::string(*text)};
}

bool Pop3Session::awaitsAuth() const {
    return commands_.outstanding() > 0 && isPartOfAuth(commands_.first().kind);
}

Event Pop3Session::accept(std::string_view text) {
    if (state_ == State::Greeting) {
        state_ = State::Authorization;
        ++answers_;
        return Greeted{std::string(text)};
    }
    const CommandKind kind = commands_.first().kind;
    if (hasMultiLineResponse(kind)) {
        inResponse_ = true;
        inBody_ = false;
        responseBytes_ = 0;
        bodyLines_ = 0;
        return Accepted{kind, std::string(text)};
    }
    commands_.takeFirst();
    ++answers_;
    if (logsOn(kind)) {
        state_ = State::Transaction;
    } else if (kind == CommandKind::Quit) {
        state_ = State::Over;
    }
    return Accepted{kind, std::string(text)};
}

/**
 * Bytes of the line, or of the part of it that has come. A CR that ends the part may belong to the line end
 * and does not count.
 */
std::size_t Pop3Session::lineBytes(const std::optional<std::string_view>& line) const noexcept {
    const std::size_t kept = line ? line->size() : input_.size() - (input_.endsInCarriageReturn() ? 1 : 0);
    return kept + input_.droppedBytes();
}

Event Pop3Session::fail(FailureKind kind) {
    state_ = State::Over;
    return Failed{kind};
}

std::int64_t Pop3Session::maximumResponseBytes() const noexcept {
    if (commands_.first().kind == CommandKind::Capa) {
        return kMaximumCapabilitiesBytes;
    }
    return isListing(commands_.first()) ? maximumListingBytes_ : kMaximumMessageBytes;
}

/**
 * How many bytes to keep of the next line. Of a line that is only counted, the first byte is enough: it tells
 * whether the line may end the response.
 */
std::size_t Pop3Session::wantedLineBytes() const noexcept {
    const Command& command = commands_.first();
    if (!isListing(command)) {
        return std::string_view::npos;
    }
    const bool counted = inBody_ && bodyLines_ == command.bodyLineLimit;
    return counted ? 1 : kMaximumListingLineBytes;
}

std::optional<Pop3Session::Event> Pop3Session::nextResponseLine() {
    // Lines beyond the wanted ones make no event. The loop reads past them, so that they do not pile up.
    for (;;) {
        const std::optional<std::string_view> line = input_.nextResponseLine(wantedLineBytes());
        if (responseBytes_ + static_cast<std::int64_t>(lineBytes(line)) > maximumResponseBytes()) {
            // No server has so many capabilities.
            const bool isCapabilities = commands_.first().kind == CommandKind::Capa;
            return fail(isCapabilities ? FailureKind::OutOfStep : FailureKind::TooLarge);
        }
        if (!line) {
            return std::nullopt;
        }
        if (*line == "." && input_.droppedBytes() == 0) {
            inResponse_ = false;
            ++answers_;
            return ResponseEnded{commands_.takeFirst().kind};
        }
        if (auto event = responseLine(*line)) {
            return event;
        }
    }
}

std::optional<Pop3Session::Event> Pop3Session::responseLine(std::string_view line) {
    // The server has put a dot before a line that starts with one (RFC 1939 section 3).
    if (line.starts_with('.')) {
        line.remove_prefix(1);
    }
    const std::size_t dropped = input_.droppedBytes();
    responseBytes_ += static_cast<std::int64_t>(line.size() + dropped) + kLineEndBytes;
    if (hasListingLines(commands_.first().kind)) {
        return ListingLine{std::string(line)};
    }
    if (!inBody_) {
        if (line.empty()) {
            inBody_ = true;
            return std::nullopt;
        }
        HeaderLine header = headerLine(line);
        header.cut = dropped > 0;
        return header;
    }
    const std::int32_t limit = commands_.first().bodyLineLimit;
    if (limit > 0 && bodyLines_ == limit) {
        return std::nullopt;
    }
    ++bodyLines_;
    return BodyLine{responseBytes_, std::string(line)};
}

} // namespace poplib
