#include "email/messages.h"

#include "platform/runtime_error.h"

namespace email {

MessageSummary& MessageTable::at(int number) {
    if (number < 1 || number > kSize) {
        throw platform::RuntimeError(platform::errors::SubscriptOutOfRange);
    }
    return summaries_.at(static_cast<std::size_t>(number - 1));
}

} // namespace email
