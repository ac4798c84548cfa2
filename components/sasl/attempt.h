#pragma once

#include "components/sasl/mechanism.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace sasl {

/** How an attempt to log on has ended. */
enum class Verdict {
    LoggedOn,
    /** The server refused the name or the password, and has counted the attempt. */
    Refused,
    /** The mechanism cannot be used with this server or this account; another one may be tried. */
    NotUsable,
    /** The server did not prove that it knows the password. It is not to be trusted with anything. */
    ServerNotProven
};

/**
 * One attempt to log on by one mechanism, in base64 as it goes over the wire (RFC 4954 section 4, RFC 5034
 * section 4). The caller sends and receives, and asks for the verdict once the server has accepted or refused
 * for good.
 */
class Attempt {
  public:
    Attempt(std::string_view mechanism, const Account& account);

    /** False when there is no such mechanism, or the account cannot be expressed in it. */
    bool canBegin() const noexcept { return mechanism_ != nullptr; }

    /** No mechanism has as many challenges; whoever sends more wants to keep the client busy. */
    static constexpr int kMaximumChallenges = 10;

    /**
     * What goes along with the command; empty when the server speaks first, or when it is longer than that
     * many bytes: then it becomes the response to the first challenge.
     */
    std::string initialResponse(std::size_t maximumBytes);

    /**
     * The response to a challenge, "*" to cancel the attempt. What takes long is done beside the windows,
     * which live on meanwhile.
     */
    std::string respond(std::string_view challenge);

    /** The verdict when the server has accepted the log-on. */
    Verdict whenAccepted() const;

    /** The verdict when the server has refused. */
    Verdict whenRefused() const;

  private:
    std::unique_ptr<Mechanism> mechanism_;
    /** The first message, until it has been sent. */
    std::string unsent_;
    /** The server has got what proves the password. */
    bool passwordProven_ = false;
    /** Why the attempt was cancelled, or LoggedOn while it is not. */
    Verdict cancelledBy_ = Verdict::LoggedOn;
};

} // namespace sasl
