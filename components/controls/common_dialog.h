#pragma once

#include <QString>

#include <functional>

class QWidget;

namespace MSComDlg {

/** The dialog in which a person chooses a file. */
class CommonDialog {
  public:
    /** Descriptions and patterns in turn, with "|" between them. */
    void setFilter(const QString& filter) { filter_ = filter; }

    /** Opens the dialog and waits, with the windows alive, until it is closed. */
    void ShowOpen(QWidget* parent);

    /** The drive path of the file chosen last; empty when the dialog was left without one. */
    const QString& FileName() const noexcept { return fileName_; }

  private:
    QString filter_;
    QString fileName_;
};

/** The filter as Qt's file dialog wants it. "*.*" means every file, with a dot in its name or without. */
QString qtFilter(const QString& filter);

/** Puts a function in the place of the real dialog, for tests; it gives the system's own path of a file. */
void replaceOpenDialog(std::function<QString()> standIn);

} // namespace MSComDlg
