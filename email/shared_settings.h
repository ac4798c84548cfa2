#pragma once

#include "email/settings.h"

namespace email {

// Shared by all windows for the whole run, and used on the user-interface thread only.
inline Settings settings;
inline DerivedValues derived;

} // namespace email
