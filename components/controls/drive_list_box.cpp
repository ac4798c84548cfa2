#include "components/controls/drive_list_box.h"

#include "platform/drives.h"
#include "platform/text.h"

#include <QSignalBlocker>
#include <QWheelEvent>

namespace controls {

DriveListBox::DriveListBox(QWidget* parent) : QComboBox(parent) {
    setFocusPolicy(Qt::StrongFocus);
    readDrives();
}

QString DriveListBox::drive() const {
    return currentData().toString();
}

void DriveListBox::setDrive(const QString& path) {
    const QSignalBlocker quiet(this);
    setCurrentIndex(path.isEmpty() ? -1 : findData(QString(path.front().toUpper() + u':')));
}

void DriveListBox::showPopup() {
    readDrives();
    QComboBox::showPopup();
}

void DriveListBox::wheelEvent(QWheelEvent* event) {
    if (hasFocus()) {
        QComboBox::wheelEvent(event);
    } else {
        event->ignore();
    }
}

void DriveListBox::readDrives() {
    const QString chosen = drive();
    const QSignalBlocker quiet(this);
    clear();
    for (const platform::Drive& drive : platform::drives()) {
        // A volume's name may hold control characters.
        addItem(platform::withControlsVisible(drive.name), QString(drive.letter + u':'));
    }
    setDrive(chosen);
}

} // namespace controls
