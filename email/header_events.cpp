#include "email/header_events.h"

#include "platform/text.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace email {

using platform::inStr;

void HeaderEvents::add(MessageSummary& summary, std::string_view field, std::string_view value) {
    summary.HeaderText.append(field).append(": ").append(value).append("\r\n");
    const std::string name = platform::upperCase(field);
    const std::size_t lengthBefore = summary.ContentType.size();
    if (name == "CONTENT-TYPE") {
        summary.ContentType.append(value);
    }
    if (!summary.ContentType.empty() && field.empty()) {
        summary.ContentType.append(value);
    }
    if (last_.summary != &summary || last_.length != lengthBefore || lengthBefore == 0) {
        last_ = {&summary, 0, 0, false};
    }
    findBoundary(summary);
    if (name == "SUBJECT") {
        summary.Subject = value;
    } else if (name == "FROM") {
        summary.From = value;
    } else if (name == "DATE") {
        summary.Date = value;
    }
}

void HeaderEvents::findBoundary(MessageSummary& summary) {
    constexpr std::string_view parameter = "boundary=";
    const std::string& text = summary.ContentType;
    if (last_.length == text.size()) {
        return;
    }
    // last_ stays empty while this may raise, so that after an error the next line searches, and raises,
    // anew.
    LastSearch search = std::exchange(last_, {});
    if (!search.settled) {
        const bool parameterKnown = search.parameterAt != 0;
        if (!parameterKnown) {
            // The parameter may have begun in the text searched before, but not earlier than this.
            const std::size_t overlap = std::min(search.length, parameter.size() - 1);
            search.parameterAt = inStr(search.length - overlap + 1, text, parameter);
        }
        if (search.parameterAt != 0) {
            const std::size_t from = std::max(search.parameterAt, search.length + 1);
            const std::size_t opening = inStr(parameterKnown ? from : search.parameterAt, text, "\"");
            if (opening != 0 || !parameterKnown) {
                // Without an opening quote this looks from the start, so it takes a quote of an earlier
                // parameter.
                const std::size_t closing = inStr(opening + 1, text, "\"");
                const auto length = static_cast<std::int64_t>(closing) - static_cast<std::int64_t>(opening);
                summary.Boundary = platform::mid(text, static_cast<std::int64_t>(opening) + 1, length - 1);
            }
            search.settled = opening != 0;
        }
    }
    search.length = text.size();
    last_ = search;
}

void resetForListing(MessageSummary& summary) {
    summary.From.clear();
    summary.HeaderText.clear();
    summary.ContentType.clear();
    summary.Boundary.clear();
    summary.Subject = '\'';
    summary.Date = '\'';
}

void emptyForListing(MessageSummary& summary) {
    for (std::string* const text : {&summary.From, &summary.HeaderText, &summary.ContentType,
                                    &summary.Boundary, &summary.Subject, &summary.Date, &summary.BodyText}) {
        std::string().swap(*text);
    }
    resetForListing(summary);
}

} // namespace email
