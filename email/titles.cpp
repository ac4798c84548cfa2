#include "email/titles.h"

#include "email/shared_settings.h"

namespace email {

QString titleEndingIn(const char* ending) {
    return settings.Institution + QLatin1String(ending);
}

QString programTitle() {
    return titleEndingIn(" E-Mail");
}

} // namespace email
