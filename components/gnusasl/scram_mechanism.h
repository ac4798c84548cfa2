#pragma once

#include "components/gnusasl/session.h"
#include "components/sasl/mechanism.h"

namespace gnusasl {

/** SCRAM (RFC 5802, RFC 7677) without channel binding. */
class ScramMechanism : public sasl::Mechanism {
  public:
    ScramMechanism(Session session, const sasl::Limits& limits);

    std::optional<std::string> initialResponse() override;
    sasl::Answer answer(std::string_view challenge) override;

    bool isComplete() const override { return next_ == Next::Success; }

  private:
    /** What the server sends next. */
    enum class Next { NothingYet, FirstMessage, FinalMessage, Success, Nothing };

    sasl::Answer answerTo(std::string_view challenge);
    sasl::Answer answerToNothing(std::string_view challenge);
    sasl::Answer answerToFirst(std::string_view message);
    sasl::Answer answerToFinal(std::string_view message);

    Session session_;
    sasl::Limits limits_;
    std::string nonce_;
    Next next_ = Next::NothingYet;
};

} // namespace gnusasl
