#include "windows/setting_hints.h"

#include "platform/text.h"

#include <QLabel>
#include <QLineEdit>
#include <QRegularExpression>

QString hintOfSwitch(const QString& text) {
    if (text == QLatin1String("yes") || text == QLatin1String("no")) {
        return {};
    }
    return text.isEmpty() ? QStringLiteral("stays as it was") : QStringLiteral("counts as \"no\"");
}

QString hintOfAttachmentDirectory(const QString& path) {
    // A drive letter alone stands for the drive's folder.
    static const QRegularExpression end(QStringLiteral("^[A-Za-z]:$|[\\\\/]$"));
    if (path.isEmpty() || end.match(path).hasMatch()) {
        return {};
    }
    static const QRegularExpression separator(QStringLiteral("[\\\\/]|^[A-Za-z]:"));
    constexpr qsizetype shownLetters = 24;
    QString last = platform::withControlsVisible(path.split(separator).constLast());
    if (last.size() > shownLetters) {
        last = last.first(shownLetters) + QChar(0x2026);
    }
    return QStringLiteral("Without \"\\\" at its end, report.txt is saved as %1report.txt.").arg(last);
}

QLabel* makeHint(const QString& name) {
    auto* hint = new QLabel;
    hint->setObjectName(name);
    hint->setTextFormat(Qt::PlainText);
    hint->hide();
    return hint;
}

void keepHint(QLineEdit* field, QLabel* hint, QString (*hintOf)(const QString& text)) {
    QObject::connect(field, &QLineEdit::textChanged, hint, [field, hint, hintOf](const QString& text) {
        const QString found = hintOf(text);
        hint->setText(found);
        hint->setVisible(!found.isEmpty());
        field->setAccessibleDescription(found);
    });
}
