#pragma once

#include "mailserver/mailbox.h"

#include <cstddef>

namespace bench {

/**
 * Fills the mailbox with messages as people get them: a header of about twenty lines, some of them folded,
 * and a body longer than a listing fetches. They are the same in every run. The lines of the bodies have at
 * least so many bytes.
 */
void fillWithSamples(mailserver::Mailbox& mailbox, int messages, std::size_t lineBytes = 0);

} // namespace bench
