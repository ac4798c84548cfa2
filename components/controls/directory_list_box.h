#pragma once

#include <QListView>
#include <QString>

#include <functional>

namespace controls {

class FolderList;

/**
 * A list of folders: from the drive's root down to the open folder, each a step further in, and beneath it
 * the folders inside. A double click, Return or the right arrow key asks to open the chosen folder, Backspace
 * or the left arrow key the one above; activated() tells of it, and whoever listens calls open().
 *
 * Left out are hidden folders, whose names begin with a dot, and folders that no settings line can name:
 * those with a backslash or a line end in their names, or with bytes that are no text.
 */
class DirectoryListBox : public QListView {
  public:
    explicit DirectoryListBox(QWidget* parent = nullptr);

    /**
     * Raised from inside setPath() when path() has become another one, and from inside open() always: who
     * opens the folder that is open already wants that one.
     */
    std::function<void()> Change;

    /** The open folder as a drive path: "C:\DOCS", "C:\" for a root; empty before the first setPath(). */
    QString path() const;

    /**
     * Opens the folder. A path without a letter is one on the drive that leads furthest towards it.
     * \throws RuntimeError 68 when the drive is not ready, 75 when there is no such folder or it may not be
     * read, 57 when the disk fails. The list stays as it was then.
     */
    void setPath(const QString& path);

    /** Opens the folder of the row, and reads it again when it is the open one. \throws what setPath()
     * throws. */
    void open(const QModelIndex& row);

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void showFolder(const QString& path);

    FolderList* folders_;
};

} // namespace controls
