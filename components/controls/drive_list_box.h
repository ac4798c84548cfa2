#pragma once

#include <QComboBox>
#include <QString>

namespace controls {

/**
 * A combo box of the drives, as "C: [home]". It looks for drives again whenever it is dropped down. A choice,
 * by mouse or key, is told by currentIndexChanged().
 */
class DriveListBox : public QComboBox {
  public:
    explicit DriveListBox(QWidget* parent = nullptr);

    /** The chosen drive as "C:"; empty when none is chosen. */
    QString drive() const;

    /** Chooses the drive that the path begins with, none when there is no such drive. Nothing is told. */
    void setDrive(const QString& path);

    void showPopup() override;

  protected:
    /** Turning the wheel scrolls the window; it chooses only where a person is at work. */
    void wheelEvent(QWheelEvent* event) override;

  private:
    void readDrives();
};

} // namespace controls
