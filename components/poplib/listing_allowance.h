#pragma once

#include "components/poplib/pop3_session.h"

#include <cstddef>

namespace poplib {

/**
 * How many bytes of the messages' lines a listing hands over. The limit keeps any mailbox, whatever it holds,
 * within some megabytes of memory. A list needs only the first lines of a header, and opening a message
 * fetches it anew, so nothing that is cut here is lost.
 *
 * Every header has an allowance of its own, of which one line may use only a part. The rest of a header, and
 * all body lines, draw on amounts that all messages share. One message of any size thus leaves enough for the
 * rows of all others.
 */
class ListingAllowance {
  public:
    /** Bytes of header lines beyond each header's own allowance, shared by all messages. */
    static constexpr std::size_t kSharedHeaderBytes = 3U << 20U;
    /** Bytes of each header's own allowance. */
    static constexpr std::size_t kHeaderBytes = 16U << 10U;
    /** Bytes of its header's own allowance that one line may use. */
    static constexpr std::size_t kHeaderLineBytes = 4U << 10U;
    /** Bytes of body lines, shared by all messages. */
    static constexpr std::size_t kBodyBytes = 6U << 20U;

    /** Begins another message, with a new allowance for its header. */
    void beginMessage() noexcept { ownHeaderBytes_ = kHeaderBytes; }

    /** Cuts the line to what is left for it; false when that is nothing. */
    bool cut(HeaderLine& line);
    bool cut(BodyLine& line);

  private:
    std::size_t ownHeaderBytes_ = kHeaderBytes;
    std::size_t sharedHeaderBytes_ = kSharedHeaderBytes;
    std::size_t bodyBytes_ = kBodyBytes;
};

} // namespace poplib
