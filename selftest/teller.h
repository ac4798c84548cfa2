#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace selftest {

/** How a step has ended. */
enum class Outcome { Ok, Failed, NotHere };

/** What the process with the windows says to the one that watches it. */
struct Note {
    enum class Kind {
        Begins,     ///< A step begins.
        BeginsLast, ///< A step begins that the process is to end with status 0 in.
        Ends        ///< The step that has begun last has ended.
    };

    Kind kind = Kind::Begins;
    Outcome outcome = Outcome::Ok;
    /** Of a step that begins its name, otherwise why it has not gone well. */
    std::string text;

    bool operator==(const Note&) const = default;
};

/** The note as one line, with its end. */
std::string lineOf(const Note& note);

/** Reads such a line, without its end; nothing when it is none. */
std::optional<Note> noteOf(std::string_view line);

/** Writes notes into a pipe, each at once. */
class Teller {
  public:
    explicit Teller(int pipe) : pipe_(pipe) {}

    void begin(const std::string& step);
    void beginLast(const std::string& step);

    /** The step that has begun last has ended. Of several calls only the first one counts. */
    void end(Outcome outcome, const std::string& why = {});

    /** A step has begun and not ended. */
    bool isInStep() const noexcept { return open_; }

    bool hasFailed() const noexcept { return hasFailed_; }

  private:
    void write(const Note& note) const;

    int pipe_;
    bool open_ = false;
    /** The last step that has ended has failed. */
    bool hasFailed_ = false;
};

} // namespace selftest
