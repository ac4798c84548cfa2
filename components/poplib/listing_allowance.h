#pragma once

#include "components/poplib/pop3_session.h"

#include <cstddef>

namespace poplib {

/**
 * How much of the messages' lines a listing hands over, so that no mailbox, whatever is in it, takes more
 * than some megabytes. A list needs the first lines of a header only, and opening a message fetches it anew,
 * so nothing that is cut here is lost.
 *
 * Every header has an allowance of its own, of which no line uses up more than a part; what goes beyond it,
 * and all body lines, draw on what all messages share. One message of any size thus leaves enough for the
 * rows of all others.
 */
class ListingAllowance {
  public:
    /** Bytes of header lines, over all messages, beyond their own. */
    static constexpr std::size_t kSharedHeaderBytes = 3U << 20U;
    /** Bytes of each header that need nothing of the shared ones. */
    static constexpr std::size_t kHeaderBytes = 16U << 10U;
    /** Of these, bytes that one line may use. */
    static constexpr std::size_t kHeaderLineBytes = 4U << 10U;
    /** Bytes of body lines, over all messages. */
    static constexpr std::size_t kBodyBytes = 6U << 20U;

    /** The lines that follow are another message's. */
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
