#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <string>

namespace email {

/** What is known of one waiting message. All texts are bytes as they came from the server. */
struct MessageSummary {
    std::string From;
    std::string Subject;
    std::string Date;
    /** Every header line as name, ": ", value, CR LF; a continuation line has an empty name. */
    std::string HeaderText;
    /** Bytes, as the server reports them. */
    std::int32_t Size = 0;
    /** Every body line received, each followed by CR LF. */
    std::string BodyText;
    std::string ContentType;
    /** The MIME boundary, without the leading "--". */
    std::string Boundary;
    /** File name of the attachment; set when the message is opened. */
    std::string AttachmentName;
    /** The header of a message that was opened, as it came: every line followed by CR LF. */
    std::string RawHeader = {};
};

/** The table of message summaries, indexed by the message's number on the server. */
class MessageTable {
  public:
    /** The house's table. */
    static constexpr int kSize = 200;
    /** As many messages as a number can name. */
    static constexpr int kLargest = std::numeric_limits<std::int16_t>::max();

    /** Sets the number of the last message that the table takes; kSize until then. */
    void setSize(int last) noexcept { last_ = last; }

    /**
     * The summary stays where it is when others come.
     * \throws RuntimeError 9 for a number outside the table.
     */
    MessageSummary& at(int number);

  private:
    int last_ = kSize;
    /** As many as were asked for. */
    std::deque<MessageSummary> summaries_;
};

} // namespace email
