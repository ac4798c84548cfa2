#pragma once

#include <QString>

namespace email {

/** The institution's name and the given ending: the title of a message box. */
QString titleEndingIn(const char* ending);

/** The institution's name and " E-Mail": the title of the windows, and of most boxes. */
QString programTitle();

} // namespace email
