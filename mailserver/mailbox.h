#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace mailserver {

/** One message of the mailbox. */
struct Message {
    /** Its name for its whole life (RFC 1939 section 7, UIDL); never given to another message. */
    std::string uniqueId;
    /** Header and body; every line ends in CR LF unless it was stored otherwise. */
    std::string text;
};

using MessagePointer = std::shared_ptr<const Message>;

/** The one mailbox of a server, kept in memory: no file is ever changed. */
class Mailbox {
  public:
    /** Largest message, in bytes. */
    static constexpr std::size_t kMaximumMessageBytes = 50U << 20U;
    /** All messages together, in bytes. */
    static constexpr std::size_t kMaximumBytes = 200U << 20U;

    /**
     * Adds the folder's *.eml files in the order of their names.
     * \throws std::runtime_error when the folder or a file cannot be read or is too large.
     */
    void load(const std::filesystem::path& folder);

    /** Adds a message at the end. False when it, or the mailbox with it, would be too large. */
    bool append(std::string_view text);

    /** Adds a message as it is, of whatever size, as a careless server would have stored it. */
    void store(std::string text);

    /** Removes a message; one that is gone already is no error. */
    void remove(const std::string& uniqueId);

    /** The messages as they are now. Who holds on to the list keeps it unchanged, deletions or not. */
    const std::vector<MessagePointer>& messages() const noexcept { return messages_; }

  private:
    std::vector<MessagePointer> messages_;
    std::size_t bytes_ = 0;
    unsigned lastNumber_ = 0;
};

} // namespace mailserver
