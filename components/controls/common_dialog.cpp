#include "components/controls/common_dialog.h"

#include "platform/drives.h"
#include "platform/nested_wait.h"
#include "platform/runtime_error.h"

#include <QFileDialog>
#include <QStringList>

#include <utility>

namespace MSComDlg {

namespace {
std::function<QString(const QString&)>& openDialogStandIn() {
    static std::function<QString(const QString&)> standIn;
    return standIn;
}

/** Returns the system's own path; empty when the drive path names nothing. */
QString folderToOpen(const QString& drivePath) {
    QString folder;
    const int error = platform::errorNumberOf([&] { folder = platform::nativePath(drivePath); });
    return error == 0 ? folder : QString();
}
} // namespace

QString qtFilter(const QString& filter) {
    const QStringList texts = filter.split(u'|');
    QStringList filters;
    for (qsizetype i = 0; i + 1 < texts.size(); i += 2) {
        const QString pattern = texts.at(i + 1).trimmed();
        filters.append(texts.at(i).trimmed() + QStringLiteral(" (") +
                       (pattern == QLatin1String("*.*") ? QStringLiteral("*") : pattern) + u')');
    }
    return filters.join(QStringLiteral(";;"));
}

void CommonDialog::ShowOpen(QWidget* parent) {
    const platform::NestedWait wait;
    const auto& standIn = openDialogStandIn();
    const QString folder = folderToOpen(initDir_);
    const QString chosen = standIn
                               ? standIn(folder)
                               : QFileDialog::getOpenFileName(parent, QString(), folder, qtFilter(filter_));
    fileName_.clear();
    nameable_ = !chosen.contains(u'\\');
    fileName_ = chosen.isEmpty() ? QString() : platform::drivePath(chosen);
}

void replaceOpenDialog(std::function<QString(const QString& folder)> standIn) {
    openDialogStandIn() = std::move(standIn);
}

} // namespace MSComDlg
