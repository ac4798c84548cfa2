#pragma once

#include <QListView>
#include <QString>

#include <functional>

namespace controls {

class FolderList;

/**
 * A list of folders: from the drive's root down to the open folder, each indented one step further, and below
 * it the folders inside. A double click, Return or the right arrow key asks to open the chosen folder;
 * Backspace or the left arrow key asks for the one above. The list emits activated() for it, and the slot
 * calls open().
 *
 * Hidden folders, whose names begin with a dot, are left out. So are folders that no settings line can name:
 * those with a backslash or a line end in their names, or with bytes that are not text.
 */
class DirectoryListBox : public QListView {
  public:
    explicit DirectoryListBox(QWidget* parent = nullptr);

    /**
     * Called by setPath() when path() has changed, and always by open(): a user who opens the folder that is
     * open already chooses it.
     */
    std::function<void()> Change;

    /** The open folder as a drive path: "C:\DOCS", "C:\" for a root; empty before the first setPath(). */
    QString path() const;

    /**
     * Opens the folder. A path without a drive letter is on the drive whose folder is the closest to it.
     * \throws RuntimeError 68 when the drive is not ready, 75 when there is no such folder or it may not be
     * read, 57 when the disk fails. The list then stays as it was.
     */
    void setPath(const QString& path);

    /**
     * Opens the folder of the row, and reads it again when it is the open one.
     * \throws RuntimeError what setPath() throws.
     */
    void open(const QModelIndex& row);

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void showFolder(const QString& path);

    FolderList* folders_;
};

} // namespace controls
