#include "message/safe_file_name.h"

#include "platform/text.h"

#include <QStringView>

#include <algorithm>
#include <array>

namespace {
constexpr QChar kInstead = u'_';
constexpr qsizetype kMaximumNameBytes = 255;
/** With its dot; what is longer is no extension. */
constexpr qsizetype kMaximumExtensionBytes = 32;

bool isUnsafeAnywhere(QChar character) {
    return QStringView(u"/\\:*?\"<>|").contains(character) || platform::isControlCharacter(character);
}

bool isUnsafeAtAnEnd(QChar character) {
    return character == u'.' || character == u' ';
}

/** DOS and its heirs take these for devices, in either case and whatever the extension. */
bool isDeviceName(const QString& name) {
    constexpr std::array devices{u"CON", u"PRN", u"AUX", u"NUL"};
    const QString device = name.section(u'.', 0, 0).trimmed().toUpper();
    const bool port = device.size() == 4 && device.at(3) >= u'1' && device.at(3) <= u'9' &&
                      (device.startsWith(QLatin1String("COM")) || device.startsWith(QLatin1String("LPT")));
    return port || std::any_of(devices.begin(), devices.end(),
                               [&device](const char16_t* known) { return device == QStringView(known); });
}

QString withSafeEnds(QString name) {
    for (qsizetype at = 0; at < name.size() && isUnsafeAtAnEnd(name.at(at)); ++at) {
        name[at] = kInstead;
    }
    for (qsizetype at = name.size() - 1; at >= 0 && isUnsafeAtAnEnd(name.at(at)); --at) {
        name[at] = kInstead;
    }
    return name;
}

QString shortened(const QString& name) {
    QByteArray bytes = name.toUtf8();
    if (bytes.size() <= kMaximumNameBytes) {
        return name;
    }
    const qsizetype dot = bytes.lastIndexOf('.');
    const bool hasExtension = dot > 0 && bytes.size() - dot <= kMaximumExtensionBytes;
    const QByteArray extension = hasExtension ? bytes.sliced(dot) : QByteArray();
    qsizetype kept = kMaximumNameBytes - extension.size();
    // A byte 10xxxxxx of UTF-8 continues a character, so the name must not be cut before it.
    while ((static_cast<unsigned char>(bytes.at(kept)) & 0xC0U) == 0x80U) {
        --kept;
    }
    return withSafeEnds(QString::fromUtf8(bytes.first(kept) + extension));
}
} // namespace

QString safeFileName(const QString& name) {
    if (name.trimmed().isEmpty()) {
        return QStringLiteral("attachment");
    }
    QString safe = name;
    std::replace_if(safe.begin(), safe.end(), isUnsafeAnywhere, kInstead);
    safe = withSafeEnds(safe);
    if (isDeviceName(safe)) {
        safe.prepend(kInstead);
    }
    return shortened(safe);
}
