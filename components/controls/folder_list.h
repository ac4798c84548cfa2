#pragma once

#include <QAbstractListModel>
#include <QString>
#include <QStringList>

namespace controls {

/** A folder, as the way to it from its drive. */
struct Place {
    /** "C:" */
    QString drive;
    QStringList names;
};

/**
 * The place that a drive path means; "." and ".." are followed. A path without a letter is one on the drive
 * that leads furthest towards it. \throws RuntimeError 75 for an empty path and for one on no drive.
 */
Place placeOf(const QString& path);

/** "C:\DOCS\MAIL"; "C:\" for a drive's root. */
QString pathOf(const Place& place);

/**
 * The names of the folders inside that may be listed, in the order of the person's language.
 * \throws RuntimeError 68 when the drive is not ready, 75 when there is no such folder or it may not be read,
 * 57 when the disk fails.
 */
QStringList foldersIn(const Place& place);

/** The rows of a directory list: the drive's root, the folders down to the open one, the folders inside. */
class FolderList : public QAbstractListModel {
  public:
    /** How far a row stands to the right; the root stands at 0. */
    static constexpr int LevelRole = Qt::UserRole;

    using QAbstractListModel::QAbstractListModel;

    void show(Place place, QStringList inside);

    /** False before the first show(). */
    bool isOpen() const { return !place_.drive.isEmpty(); }

    const Place& place() const { return place_; }

    int openRow() const { return static_cast<int>(place_.names.size()); }

    /** The folder of a row that is there. */
    Place placeOfRow(int row) const;

    int rowCount(const QModelIndex& parent = {}) const override;

    QVariant data(const QModelIndex& index, int role) const override;

  private:
    QString nameOfRow(int row) const;

    Place place_;
    QStringList inside_;
};

} // namespace controls
