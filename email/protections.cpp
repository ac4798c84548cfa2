#include "email/protections.h"

namespace email {

QString inWords(const std::optional<transport::Protection>& protection) {
    if (!protection) {
        return QStringLiteral("not connected yet");
    }
    if (protection->encryption.isEmpty()) {
        return QStringLiteral("not encrypted");
    }
    const QString server = protection->serverProven ? QStringLiteral("encrypted, certificate valid")
                                                    : QStringLiteral("encrypted, server not verified");
    return server + QStringLiteral(" (") + protection->encryption + u')';
}

} // namespace email
