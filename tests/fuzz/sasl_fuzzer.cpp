// Whatever a server sends as challenges, a mechanism ends at the first fault, shows the password only where
// it is meant to, and takes a log-on for complete only after the server's own signature.
//
// Input: the mechanism, whether its initial response goes along, and for each challenge how it is made, a
// size and bytes.

#include "components/gnusasl/mechanisms.h"
#include "components/poplib/apop.h"
#include "components/sasl/base64.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/sasl/fixed_random.h"
#include "tests/sasl/scram_server.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <variant>

namespace {

constexpr std::array<std::string_view, 5> kMechanisms{"SCRAM-SHA-256", "SCRAM-SHA-1", "CRAM-MD5", "PLAIN",
                                                      "LOGIN"};
/** Every iteration takes time, and all are alike. */
constexpr std::uint32_t kIterations = 8;

const sasl::Account& account() {
    static const sasl::Account known{"user", "pencil"};
    return known;
}

/** One log-on by SCRAM or another mechanism, beside a server that knows how it should go. */
class LogOn {
  public:
    LogOn(std::string_view name, bool responseGoesAlong)
        : name_(name),
          mechanism_(gnusasl::makeMechanism(name, account(), {.iterations = kIterations})),
          server_(hash(), account().password, {"server", "salt", 2}) {
        fuzz::require(mechanism_ != nullptr, "the mechanism is made");
        if (const auto response = responseGoesAlong ? mechanism_->initialResponse() : std::nullopt) {
            remember(*response);
        }
    }

    /** What the server would send now, where the mechanism is SCRAM. */
    const std::string& rightChallenge() const { return rightChallenge_; }

    /** The first message's start, as the client will take it. */
    std::string startOfFirst() const { return rightChallenge_.substr(0, rightChallenge_.find(',')); }

    void challenge(const std::string& text) {
        const sasl::Answer answer = mechanism_->answer(text);
        const auto* response = std::get_if<std::string>(&answer);
        fuzz::require(response == nullptr || !failed_, "nothing is answered after a fault");
        failed_ = response == nullptr;
        const bool mayShowPassword = name_ == "PLAIN" || name_ == "LOGIN";
        if (response != nullptr) {
            fuzz::require(mayShowPassword || response->find(account().password) == std::string::npos,
                          "the password is not shown");
            isSigned_ = isSigned_ || isSignature(text);
            remember(*response);
        }
        fuzz::require(!mechanism_->isComplete() || !failed_, "a fault completes nothing");
        fuzz::require(!mechanism_->isComplete() || !isScram() || isSigned_, "SCRAM needs the signature");
    }

  private:
    QCryptographicHash::Algorithm hash() const {
        return name_ == "SCRAM-SHA-1" ? QCryptographicHash::Sha1 : QCryptographicHash::Sha256;
    }

    bool isScram() const { return name_.starts_with("SCRAM"); }

    bool isSignature(std::string_view text) const {
        return rightChallenge_.starts_with("v=") && text.substr(0, text.find(',')) == rightChallenge_;
    }

    void remember(std::string_view response) {
        if (!isScram() || response.empty()) {
            return;
        }
        rightChallenge_ =
            response.starts_with("n,,") ? server_.firstMessage(response) : server_.signature(response);
    }

    std::string_view name_;
    std::unique_ptr<sasl::Mechanism> mechanism_;
    support::ScramServer server_;
    std::string rightChallenge_;
    bool failed_ = false;
    bool isSigned_ = false;
};

void checkTexts(std::string_view text) {
    if (const auto bytes = sasl::fromBase64(text)) {
        fuzz::require(sasl::toBase64(*bytes) == text, "bytes have one base64 text");
    }
    if (const auto timestamp = poplib::apopTimestamp(text)) {
        fuzz::require(timestamp->size() >= 5 && timestamp->front() == '<' && timestamp->back() == '>',
                      "a timestamp has its brackets");
        fuzz::require(
            std::all_of(timestamp->begin(), timestamp->end(), [](char c) { return c >= '!' && c <= '~'; }),
            "a timestamp is visible ASCII");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The same input makes the same nonce.
    const support::FixedRandom nonce("eighteen octets...");
    fuzz::Input input(data, size);
    LogOn logOn(kMechanisms[input.below(kMechanisms.size())], input.below(2) == 0);
    for (int round = 0; round < 6 && !input.rest().empty(); ++round) {
        const std::size_t kind = input.below(3);
        const std::size_t bytes = input.below(256);
        const std::string text(input.take(bytes));
        checkTexts(text);
        const std::string start = kind == 0 ? "" : kind == 1 ? logOn.startOfFirst() : logOn.rightChallenge();
        logOn.challenge(start + text);
    }
    return 0;
}
