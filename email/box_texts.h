#pragma once

#include <QString>

namespace email {

// What the boxes say that report a failure, each with the number of the error. A failed log-in has a table of
// its own, retrieval/log_in_failures.h.

/** At the start. */
QString boxOfFailedStart(int error);
/** At a second start, when the window of the first program cannot be shown. */
QString boxOfHiddenProgram();
/** When a message is opened. */
QString boxOfFailedOpening(int error);
/** When a message is opened that cannot be shown at all. */
QString boxOfUnshowableMessage();
/** When an attachment is saved. */
QString boxOfFailedSaving(int error);
/** When a message is sent. */
QString boxOfFailedSending(int error);
/** No box: at the foot of the compose window, while a letter is written. */
QString noteOfUnkeptLetter(int error);

} // namespace email
