#pragma once

#include <string>

namespace email {

/** The opening of a message, and what the message window offers of the open one. */
struct Opening {
    /** File name of the attachment that the message window offers to save. */
    std::string CurrentAttachment;
    /** True only while a whole message is fetched: body lines then move the progress bar. */
    bool Retrieving = false;
};

/** Shared by all windows for the whole run, and used on the user-interface thread only. */
inline Opening opening;

} // namespace email
