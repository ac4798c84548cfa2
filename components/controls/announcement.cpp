#include "components/controls/announcement.h"

#include <QAccessible>
#include <QAccessibleWidget>

namespace controls {

namespace {
/** Qt asks this for every object that a screen reader comes upon. */
QAccessibleInterface* announcementForReaders(const QString& /*className*/, QObject* object) {
    auto* const announcement = dynamic_cast<Announcement*>(object);
    return announcement == nullptr ? nullptr : new QAccessibleWidget(announcement, QAccessible::Notification);
}
} // namespace

Announcement::Announcement(QWidget* parent) : QWidget(parent) {
    hide();
    // Installed once, however many there are.
    static const bool installed = [] {
        QAccessible::installFactory(announcementForReaders);
        return true;
    }();
    static_cast<void>(installed);
}

// A changed name or description of something that has not the keyboard is not read out; a notification is,
// when it appears.
void Announcement::tell(const QString& text) {
    setAccessibleName(text);
    QAccessibleEvent appeared(this, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&appeared);
}

} // namespace controls
