#include "components/controls/folder_list.h"

#include "platform/drives.h"
#include "platform/private_file.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <QApplication>
#include <QCollator>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QStyle>

#include <algorithm>
#include <filesystem>
#include <utility>
#include <vector>

namespace controls {

namespace {
namespace errors = platform::errors;
using platform::RuntimeError;

bool hasDrive(const QString& path) {
    return path.size() >= 2 && path.at(1) == u':' && path.at(0).unicode() < 0x80 && path.at(0).isLetter();
}

bool mayBeListed(const QString& name, const std::string& bytes) {
    const bool hidden = name.startsWith(u'.');
    const bool inASettingsLine = !name.contains(u'\\') && !name.contains(u'\r') && !name.contains(u'\n');
    return !hidden && inASettingsLine && QFile::encodeName(name).toStdString() == bytes;
}

void sortForPeople(QStringList& names) {
    // The C locale would put all capital letters first.
    const QLocale language;
    QCollator order(language.language() == QLocale::C ? QLocale(QLocale::English) : language);
    order.setNumericMode(true);
    order.setCaseSensitivity(Qt::CaseInsensitive);
    std::vector<std::pair<QCollatorSortKey, QString>> keyed;
    keyed.reserve(static_cast<std::size_t>(names.size()));
    for (const QString& name : std::as_const(names)) {
        keyed.emplace_back(order.sortKey(name), name);
    }
    std::sort(keyed.begin(), keyed.end(), [](const auto& left, const auto& right) {
        const int difference = left.first.compare(right.first);
        return difference != 0 ? difference < 0 : left.second < right.second;
    });
    std::transform(keyed.begin(), keyed.end(), names.begin(), [](const auto& entry) { return entry.second; });
}
} // namespace

Place placeOf(const QString& path) {
    if (path.isEmpty()) {
        throw RuntimeError(errors::PathFileAccess);
    }
    QString whole = hasDrive(path) ? path : platform::drivePath(platform::nativePath(path));
    Place place{QString(whole.front().toUpper() + u':'), {}};
    const QStringList names = whole.sliced(2).replace(u'/', u'\\').split(u'\\', Qt::SkipEmptyParts);
    for (const QString& name : names) {
        if (name == QLatin1String("..")) {
            if (!place.names.isEmpty()) {
                place.names.removeLast();
            }
        } else if (name != QLatin1String(".")) {
            place.names.append(name);
        }
    }
    return place;
}

QString pathOf(const Place& place) {
    return place.drive + u'\\' + place.names.join(u'\\');
}

QStringList foldersIn(const Place& place) {
    if (!QFileInfo(platform::nativePath(place.drive)).isDir()) {
        throw RuntimeError(errors::DeviceUnavailable);
    }
    const std::filesystem::path folder = QFile::encodeName(platform::nativePath(pathOf(place))).toStdString();
    std::error_code error;
    QStringList names;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string bytes = entry->path().filename().string();
        QString name = QFile::decodeName(QByteArray::fromStdString(bytes));
        // A link whose target is gone is not a folder.
        std::error_code ignored;
        if (mayBeListed(name, bytes) && entry->is_directory(ignored)) {
            names.append(std::move(name));
        }
    }
    if (error) {
        throw RuntimeError(platform::openingErrorNumber(error.value()));
    }
    sortForPeople(names);
    return names;
}

void FolderList::show(Place place, QStringList inside) {
    beginResetModel();
    place_ = std::move(place);
    inside_ = std::move(inside);
    endResetModel();
}

Place FolderList::placeOfRow(int row) const {
    if (row <= openRow()) {
        return {place_.drive, place_.names.first(row)};
    }
    return {place_.drive, place_.names + QStringList(nameOfRow(row))};
}

int FolderList::rowCount(const QModelIndex& parent) const {
    return parent.isValid() || !isOpen() ? 0 : openRow() + 1 + static_cast<int>(inside_.size());
}

QVariant FolderList::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount()) {
        return {};
    }
    const bool isOpened = index.row() <= openRow();
    switch (role) {
    case Qt::DisplayRole:
        // A folder's name may hold control characters.
        return platform::withControlsVisible(nameOfRow(index.row()));
    case Qt::ToolTipRole:
        // Escaped rich text, since Qt would take a plain name that looks like markup for rich text.
        return QString(QStringLiteral("<p style='white-space:pre'>") +
                       platform::withControlsVisible(nameOfRow(index.row())).toHtmlEscaped() +
                       QStringLiteral("</p>"));
    case Qt::DecorationRole:
        return QApplication::style()->standardIcon(isOpened ? QStyle::SP_DirOpenIcon : QStyle::SP_DirIcon);
    case LevelRole:
        return isOpened ? index.row() : openRow() + 1;
    default:
        return {};
    }
}

QString FolderList::nameOfRow(int row) const {
    if (row == 0) {
        return pathOf({place_.drive, {}});
    }
    return row <= openRow() ? place_.names.at(row - 1) : inside_.at(row - openRow() - 1);
}

} // namespace controls
