#pragma once

#include "components/gnusasl/session.h"
#include "components/sasl/mechanism.h"

namespace gnusasl {

/** How a mechanism goes that proves nothing of the server. */
struct Course {
    /** Responses until the server says whether the log-on has succeeded. */
    int responses = 1;
    bool clientSpeaksFirst = false;
    /** Whether the response depends on the challenge. Otherwise the challenge is a prompt, of any wording. */
    bool readsChallenge = false;
};

/** PLAIN (RFC 4616), LOGIN and CRAM-MD5 (RFC 2195). */
class PasswordMechanism : public sasl::Mechanism {
  public:
    PasswordMechanism(Session session, const Course& course);

    std::optional<std::string> initialResponse() override;
    sasl::Answer answer(std::string_view challenge) override;
    bool isComplete() const override;

  private:
    Session session_;
    Course course_;
    int made_ = 0;
    bool failed_ = false;
};

} // namespace gnusasl
