#include "standard/flowed_text.h"

#include <algorithm>

namespace standard {

namespace {
constexpr std::string_view kLineEnd = "\r\n";

/** A line without its line end, cut as RFC 3676 section 4 has it. */
struct Line {
    std::size_t quotations = 0;
    std::string_view text;
    /** The next line of the same depth belongs to it. */
    bool flows = false;
};

Line read(std::string_view line) {
    Line result;
    result.quotations = std::min(line.find_first_not_of('>'), line.size());
    result.text = line.substr(result.quotations);
    if (result.text.starts_with(' ')) {
        // Section 4.4: the blank keeps what looks like a quotation from being one.
        result.text.remove_prefix(1);
    }
    result.flows = result.text.ends_with(' ') && result.text != "-- ";
    return result;
}
} // namespace

std::string rejoined(std::string_view text, bool deleteBlanks) {
    std::string result;
    result.reserve(text.size());
    bool continues = false;
    std::size_t depth = 0;
    while (!text.empty()) {
        const std::size_t end = text.find(kLineEnd);
        Line line = read(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + kLineEnd.size());
        const bool isSignature = line.text == "-- ";
        if (continues && (line.quotations != depth || isSignature)) {
            result += kLineEnd;
            continues = false;
        }
        if (!continues && line.quotations > 0) {
            result.append(line.quotations, '>').append(" ");
        }
        if (line.flows && deleteBlanks) {
            line.text.remove_suffix(1);
        }
        result += line.text;
        continues = line.flows;
        depth = line.quotations;
        if (!continues && end != std::string_view::npos) {
            result += kLineEnd;
        }
    }
    return result;
}

} // namespace standard
