#include "selftest/teller.h"

#include <algorithm>
#include <cerrno>
#include <unistd.h>

namespace selftest {

namespace {
/** A line that stays one, with nothing in it that a terminal would obey. */
std::string onOneLine(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char letter) { return static_cast<unsigned char>(letter) < 0x20; }, ' ');
    return text;
}
} // namespace

std::string lineOf(const Note& note) {
    return std::to_string(static_cast<int>(note.kind)) + std::to_string(static_cast<int>(note.outcome)) +
           onOneLine(note.text) + '\n';
}

std::optional<Note> noteOf(std::string_view line) {
    if (line.size() < 2 || line[0] < '0' || line[0] > '2' || line[1] < '0' || line[1] > '2') {
        return std::nullopt;
    }
    return Note{static_cast<Note::Kind>(line[0] - '0'), static_cast<Outcome>(line[1] - '0'),
                std::string(line.substr(2))};
}

void Teller::begin(const std::string& step) {
    open_ = true;
    write({Note::Kind::Begins, Outcome::Ok, step});
}

void Teller::beginLast(const std::string& step) {
    open_ = true;
    write({Note::Kind::BeginsLast, Outcome::Ok, step});
}

void Teller::end(Outcome outcome, const std::string& why) {
    if (open_) {
        open_ = false;
        hasFailed_ = outcome == Outcome::Failed;
        write({Note::Kind::Ends, outcome, why});
    }
}

void Teller::write(const Note& note) const {
    const std::string line = lineOf(note);
    std::size_t done = 0;
    while (done < line.size()) {
        const ssize_t written = ::write(pipe_, line.data() + done, line.size() - done);
        if (written > 0) {
            done += static_cast<std::size_t>(written);
        } else if (written < 0 && errno != EINTR) {
            // Whoever was to read this has gone.
            return;
        }
    }
}

} // namespace selftest
