#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace directory {

/** What a search asks for. */
struct SearchRequest {
    /** Where the search begins, a distinguished name (RFC 4514). */
    std::string base;
    /** Looks at the base alone, not at what is below it. */
    bool baseOnly = false;
    /** As RFC 4515 has it. */
    std::string filter;
    /** Most entries and seconds that the server is asked to spend; 0 means its own limits. */
    int entries = 0;
    int seconds = 0;
};

/**
 * What the program looks at in an entry, as the directory's own bytes. Attributes that the entry does not
 * have are empty, and so are those that no person would read: see the limits.
 */
struct Entry {
    std::string commonName;
    std::string displayName;
    std::string givenName;
    std::string surname;
    /** In the order of the directory, without those that are too long. */
    std::vector<std::string> mail;

    /** Longest name, which is cut anywhere, and longest address, others being left out; most addresses. */
    static constexpr std::size_t kMostNameBytes = 1024;
    static constexpr std::size_t kMostMailBytes = 254;
    static constexpr std::size_t kMostMail = 16;
};

/** One thing that the server has said. */
struct Message {
    enum class Kind {
        Entry,
        /** The end of what was asked last. */
        Result,
        /** The server has said something that is no LDAP, or that it ends the session; nothing follows. */
        Broken
    };

    Kind kind = Kind::Broken;
    Entry entry{};
    /** The server's result (RFC 4511 section 4.1.9). */
    int code = 0;
    /** What the server has said to it, for a person. */
    std::string said{};
};

/**
 * A client's conversation with a directory (RFC 4511) without a network: what is asked and bytes that have
 * come go in, bytes to send and messages come out. One thing is asked at a time, and ends with its result.
 * Referrals are not followed, and aliases are not looked behind.
 */
class Conversation {
  public:
    Conversation() = default;
    virtual ~Conversation() = default;
    Conversation(const Conversation&) = delete;
    Conversation& operator=(const Conversation&) = delete;

    /** Asks for encryption, which begins behind the result 0 (RFC 4511 section 4.14). */
    virtual void startTls() = 0;

    /** Logs on with a distinguished name and a password that is not empty (RFC 4513 section 5.1.3). */
    virtual void logOn(const std::string& name, const std::string& password) = 0;

    virtual void search(const SearchRequest& request) = 0;

    /** What is to be sent now. */
    virtual std::string takeBytesToSend() = 0;

    virtual void receive(std::string_view bytes) = 0;

    /** The next message among the bytes that have come; nothing while it is not complete. */
    virtual std::optional<Message> next() = 0;

    /** Whether bytes have come that no message has used up. */
    virtual bool hasUnreadBytes() const = 0;

    /** Longest message that is taken from a server, in bytes. */
    static constexpr std::size_t kMostMessageBytes = 1U << 20U;
};

/**
 * Loads the library that knows the protocol, beside the windows, since it looks up this computer's name when
 * it is used first. Calls `loaded` once from the event loop, also when it cannot be loaded.
 */
void loadConversations(const std::function<void()>& loaded);

/** Makes a conversation; nullptr before loadConversations() is through, and where that has failed. */
std::unique_ptr<Conversation> makeConversation();

} // namespace directory
