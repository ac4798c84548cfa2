#pragma once

#include "mailserver/mailbox.h"

namespace bench {

/**
 * Fills the mailbox with messages as people get them: a header of about twenty lines, some of them folded,
 * and a body longer than a listing fetches. They are the same in every run.
 */
void fillWithSamples(mailserver::Mailbox& mailbox, int messages);

} // namespace bench
