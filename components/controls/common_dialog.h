#pragma once

#include <QString>

#include <functional>

class QWidget;

namespace MSComDlg {

/** The dialog in which the user chooses a file. */
class CommonDialog {
  public:
    /** The filter is a list of descriptions and patterns in turn, separated by "|". */
    void setFilter(const QString& filter) { filter_ = filter; }

    /** The drive path of the folder in which the dialog opens. If it names none, Qt chooses the folder. */
    void setInitDir(const QString& folder) { initDir_ = folder; }

    /**
     * Opens the dialog and waits until it is closed. The windows handle events meanwhile.
     * \throws RuntimeError 75 for a chosen file that no drive path can name; see isNameable().
     */
    void ShowOpen(QWidget* parent);

    /** The drive path of the file chosen last; empty when the user chose none. */
    const QString& FileName() const noexcept { return fileName_; }

    /** False when a backslash in its path keeps the file chosen last from having a drive path. */
    bool isNameable() const noexcept { return nameable_; }

  private:
    QString filter_;
    QString initDir_;
    QString fileName_;
    bool nameable_ = true;
};

/** Returns the filter in the form of Qt's file dialog. "*.*" means every file, also without a dot. */
QString qtFilter(const QString& filter);

/**
 * Replaces the real dialog by a function, for tests. It takes the system's own path of the folder in which
 * the dialog opens, and returns that of a file.
 */
void replaceOpenDialog(std::function<QString(const QString& folder)> standIn);

} // namespace MSComDlg
