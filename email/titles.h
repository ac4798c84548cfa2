#pragma once

#include <QString>

namespace email {

/** The institution's name and an ending: what a box of the running program is titled with. */
QString titleEndingIn(const char* ending);

/** The institution's name and " E-Mail": the title of the windows, and of most boxes. */
QString programTitle();

} // namespace email
