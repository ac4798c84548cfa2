#pragma once

#include <QAbstractListModel>
#include <QString>
#include <QStringList>

namespace controls {

/** A folder: its drive, and the names of the folders that lead from the drive's root to it. */
struct Place {
    /** "C:" */
    QString drive;
    QStringList names;
};

/**
 * Returns the place that a drive path means, with "." and ".." resolved. A path without a drive letter is on
 * the drive whose folder is the closest to it. \throws RuntimeError 75 for an empty path and for one on no
 * drive.
 */
Place placeOf(const QString& path);

/** "C:\DOCS\MAIL"; "C:\" for a drive's root. */
QString pathOf(const Place& place);

/**
 * Returns the names of the folders inside that may be listed, in the order of the user's language.
 * \throws RuntimeError 68 when the drive is not ready, 75 when there is no such folder or it may not be read,
 * 57 when the disk fails.
 */
QStringList foldersIn(const Place& place);

/** The rows of a directory list: the drive's root, the folders down to the open one, and those inside it. */
class FolderList : public QAbstractListModel {
  public:
    /** The role of a row's level; the root has level 0. */
    static constexpr int LevelRole = Qt::UserRole;

    using QAbstractListModel::QAbstractListModel;

    void show(Place place, QStringList inside);

    /** False before the first show(). */
    bool isOpen() const { return !place_.drive.isEmpty(); }

    const Place& place() const { return place_; }

    int openRow() const { return static_cast<int>(place_.names.size()); }

    /** Returns the folder of a row, which must exist. */
    Place placeOfRow(int row) const;

    int rowCount(const QModelIndex& parent = {}) const override;

    QVariant data(const QModelIndex& index, int role) const override;

  private:
    QString nameOfRow(int row) const;

    Place place_;
    QStringList inside_;
};

} // namespace controls
