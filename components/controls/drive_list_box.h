#pragma once

#include <QComboBox>
#include <QString>

namespace controls {

/**
 * A combo box of the drives, such as "C: [home]". It reads the drives again whenever its list is opened. It
 * emits currentIndexChanged() when the user chooses a drive, by mouse or key.
 */
class DriveListBox : public QComboBox {
  public:
    explicit DriveListBox(QWidget* parent = nullptr);

    /** The chosen drive as "C:"; empty when none is chosen. */
    QString drive() const;

    /** Chooses the drive that the path begins with; none when there is no such drive. Emits no signal. */
    void setDrive(const QString& path);

    void showPopup() override;

  protected:
    /** Turning the wheel chooses a drive only when the box has the focus. Otherwise it scrolls the window. */
    void wheelEvent(QWheelEvent* event) override;

  private:
    void readDrives();
};

} // namespace controls
