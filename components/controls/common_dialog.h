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

    /** The drive path of the folder in which the dialog opens; where there is none, Qt chooses one. */
    void setInitDir(const QString& folder) { initDir_ = folder; }

    /**
     * Opens the dialog and waits, with the windows alive, until it is closed.
     * \throws RuntimeError 75 for a chosen file that no drive path can name; see isNameable().
     */
    void ShowOpen(QWidget* parent);

    /** The drive path of the file chosen last; empty when the dialog was left without one. */
    const QString& FileName() const noexcept { return fileName_; }

    /** False when a backslash in its path keeps the file chosen last from having a drive path. */
    bool isNameable() const noexcept { return nameable_; }

  private:
    QString filter_;
    QString initDir_;
    QString fileName_;
    bool nameable_ = true;
};

/** The filter as Qt's file dialog wants it. "*.*" means every file, with a dot in its name or without. */
QString qtFilter(const QString& filter);

/** Puts a function in the place of the real dialog, for tests; it gets the system's own path of the folder in
 * which the dialog opens, and gives the one of a file. */
void replaceOpenDialog(std::function<QString(const QString& folder)> standIn);

} // namespace MSComDlg
