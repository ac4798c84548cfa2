#pragma once

#include <string>
#include <vector>

namespace selftest {

inline constexpr const char* kTextSubject = "Nothing but text";
inline constexpr const char* kText = "These words have come all the way.";
inline constexpr const char* kAttachmentSubject = "With an attachment";
inline constexpr const char* kAttachmentName = "sample.bin";
inline constexpr const char* kSentSubject = "Sent by the test";
inline constexpr const char* kSentText = "This letter comes back to whoever has sent it.";
inline constexpr const char* kSentName = "letter.bin";

/** Bytes that no text has, with every value among them. */
std::string attachmentBytes();

/** The messages that wait at first: one of text, one with an attachment. */
std::vector<std::string> waitingMessages();

} // namespace selftest
