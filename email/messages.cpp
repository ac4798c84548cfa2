#include "email/messages.h"

#include "platform/runtime_error.h"

namespace email {

MessageSummary& MessageTable::at(int number) {
    if (number < 1 || number > last_) {
        throw platform::RuntimeError(platform::errors::SubscriptOutOfRange);
    }
    const auto index = static_cast<std::size_t>(number - 1);
    if (index >= summaries_.size()) {
        summaries_.resize(index + 1);
    }
    return summaries_[index];
}

} // namespace email
