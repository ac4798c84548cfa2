#include "components/controls/common_dialog.h"

#include "platform/drives.h"
#include "platform/nested_wait.h"

#include <QFileDialog>
#include <QStringList>

#include <utility>

namespace MSComDlg {

namespace {
std::function<QString()>& openDialogStandIn() {
    static std::function<QString()> standIn;
    return standIn;
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
    const QString chosen =
        standIn ? standIn() : QFileDialog::getOpenFileName(parent, QString(), QString(), qtFilter(filter_));
    fileName_ = chosen.isEmpty() ? QString() : platform::drivePath(chosen);
}

void replaceOpenDialog(std::function<QString()> standIn) {
    openDialogStandIn() = std::move(standIn);
}

} // namespace MSComDlg
