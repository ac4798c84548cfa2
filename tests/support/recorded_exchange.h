#pragma once

// A session whose server is a recorded dialogue, so that plans are tested without a network.

#include "components/protocol/exchange.h"
#include "platform/runtime_error.h"
#include "tests/support/pieces.h"
#include "tests/support/transcript.h"

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace support {

template <class Session>
class RecordedExchange : public protocol::Exchange<Session> {
  public:
    using Event = typename Session::Event;
    using Describe = std::string (*)(const Event& event);
    /** The number of the error that the event means for the program, 0 for none; nullptr: the server is gone.
     */
    using NumberOf = int (*)(const Event* event, const Session& session);

    /** The server's bytes come in pieces of this size. */
    RecordedExchange(const std::vector<Transcript::Turn>& turns, std::size_t pieceSize, Describe describe,
                     NumberOf numberOf)
        : turns_(turns.begin(), turns.end()),
          pieceSize_(pieceSize),
          describe_(describe),
          numberOf_(numberOf) {}

    Session& session() override { return session_; }

    /**
     * Encryption stands in the dialogue as a line of the client's.
     * \throws RuntimeError 20325 when the server has said more than it was asked for.
     */
    void encrypt() override {
        if (session_.hasUnusedBytes() || !events_.empty()) {
            throw platform::RuntimeError(platform::errors::EncryptionFailed);
        }
        sent_.emplace_back(kEncryption);
    }

    static constexpr const char* kEncryption = "(encryption begins)";

    /** \throws RuntimeError for a failed session, and when the server has nothing more to say. */
    Event next() override {
        while (events_.empty()) {
            collectOutput();
            if (!hearServer()) {
                throw platform::RuntimeError(numberOf_(nullptr, session_));
            }
        }
        Event event = std::move(events_.front());
        events_.pop_front();
        described_.push_back(describe_(event));
        if (const int number = numberOf_(&event, session_); number != 0) {
            throw platform::RuntimeError(number);
        }
        return event;
    }

    /** Takes what the session still has to send. */
    void collectOutput() {
        std::string output = session_.takeOutput();
        for (std::size_t end = output.find("\r\n"); end != std::string::npos; end = output.find("\r\n")) {
            sent_.push_back(output.substr(0, end));
            output.erase(0, end + 2);
        }
    }

    /** The lines that were sent. */
    const std::vector<std::string>& sent() const { return sent_; }

    /** The events that came, in the words of described(). */
    const std::vector<std::string>& events() const { return described_; }

  private:
    /** Takes what the server says next, as soon as the client has said what stands before; false at the end.
     */
    bool hearServer() {
        std::size_t linesBefore = 0;
        while (linesBefore < turns_.size() && turns_[linesBefore].speaker == Transcript::Speaker::Client) {
            ++linesBefore;
        }
        if (heard_ + linesBefore > sent_.size() || linesBefore == turns_.size()) {
            return false;
        }
        heard_ += linesBefore;
        turns_.erase(turns_.begin(), turns_.begin() + static_cast<std::ptrdiff_t>(linesBefore));
        std::string bytes;
        for (; !turns_.empty() && turns_.front().speaker == Transcript::Speaker::Server; turns_.pop_front()) {
            bytes += turns_.front().text;
        }
        forEachPiece(bytes, pieceSize_, [this](std::string_view piece) {
            session_.receive(piece);
            while (auto event = session_.nextEvent()) {
                events_.push_back(*std::move(event));
            }
        });
        return true;
    }

    std::deque<Transcript::Turn> turns_;
    std::size_t pieceSize_;
    Describe describe_;
    NumberOf numberOf_;
    Session session_;
    std::deque<Event> events_;
    std::vector<std::string> described_;
    std::vector<std::string> sent_;
    /** Of the lines that were sent, those that the dialogue has answered or passed over. */
    std::size_t heard_ = 0;
};

} // namespace support
