#include "components/controls/message_box.h"

#include "components/controls/button_room.h"
#include "components/controls/early_window.h"
#include "platform/error_meanings.h"
#include "platform/nested_wait.h"
#include "platform/reading_order.h"

#include <QApplication>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QWindow>

#include <algorithm>
#include <utility>

namespace controls {

namespace {
std::function<MessageAnswer(const MessageBox&)>& messageBoxStandIn() {
    static std::function<MessageAnswer(const MessageBox&)> standIn;
    return standIn;
}

QMessageBox::Icon iconOf(MessageIcon icon) {
    switch (icon) {
    case MessageIcon::Exclamation:
        return QMessageBox::Warning;
    case MessageIcon::Question:
        return QMessageBox::Question;
    case MessageIcon::None:
        break;
    }
    return QMessageBox::NoIcon;
}

QMessageBox::StandardButton buttonFor(MessageAnswer answer) {
    return answer == MessageAnswer::Yes ? QMessageBox::Yes : QMessageBox::No;
}

/** Puts the box below the place to leave free, or above it where the screen has no room below. */
void placeBeside(const QRect& leftFree, const QWidget& opener, QMessageBox& box) {
    constexpr int gap = 8;
    const QRect screen = opener.screen()->availableGeometry();
    const QSize frame = opener.frameGeometry().size() - opener.size();
    box.ensurePolished();
    const QSize size = box.sizeHint() + frame;
    const int left = opener.frameGeometry().center().x() - size.width() / 2;
    // Some window managers put the title bar above the requested place, so there is room for it. Some do not
    // tell how high it is; then it is as high as the style draws one.
    const int titleBar = std::max(opener.geometry().top() - opener.frameGeometry().top(),
                                  box.style()->pixelMetric(QStyle::PM_TitleBarHeight));
    const int below = leftFree.bottom() + gap + titleBar;
    const int top = below + size.height() <= screen.bottom() ? below : leftFree.top() - gap - size.height();
    box.move(qBound(screen.left(), left, screen.right() - size.width()), qMax(screen.top(), top));
}

/** Returns a visible window of the program, an enabled one if there is one; null without any. */
QWidget* windowThatIsSeen() {
    QWidget* seen = nullptr;
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && (seen == nullptr || window->isEnabled())) {
            seen = window;
        }
    }
    return seen;
}

/** Puts a box without a parent in front of the window, in its middle. */
void standAbove(QMessageBox& box, const QWidget* window) {
    if (window == nullptr) {
        return;
    }
    // Only a system window can have a transient parent.
    makeSystemWindow(box);
    box.windowHandle()->setTransientParent(window->windowHandle());
    QRect place(QPoint(0, 0), box.sizeHint());
    place.moveCenter(window->frameGeometry().center());
    box.move(place.topLeft());
}

/** Returns the width that the title needs: window managers show it in bold, between an icon and buttons. */
int widthOfTitle(const QString& title) {
    QFont bold = QApplication::font();
    bold.setBold(true);
    const QFontMetrics metrics(bold);
    constexpr int buttonsOfAFrame = 8; // with their margins and an icon, in lines
    return metrics.horizontalAdvance(title) + buttonsOfAFrame * metrics.height();
}

/**
 * Returns the width that the text needs, with equal room on both sides. Longer lines than this are broken; it
 * has room for a path of usual length.
 */
int widthOfText(const QMessageBox& dialog) {
    constexpr int lettersOfALine = 70;
    constexpr int roomOnASide = 21; // what Qt leaves in front of the text
    const QFontMetrics metrics = dialog.fontMetrics();
    const int icon = dialog.icon() == QMessageBox::NoIcon
                         ? 0
                         : dialog.style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, &dialog);
    const int text = metrics.size(0, dialog.text()).width();
    return icon + std::min(text, lettersOfALine * metrics.averageCharWidth()) + 2 * roomOnASide;
}

/** Makes the box wide enough for its title and text, in letters of any size. */
void makeRoom(QMessageBox& dialog) {
    const int wanted = std::max(widthOfTitle(dialog.windowTitle()), widthOfText(dialog));
    const int most = dialog.screen()->availableSize().width() * 9 / 10;
    auto* const grid = qobject_cast<QGridLayout*>(dialog.layout());
    grid->addItem(new QSpacerItem(std::min(wanted, most), 0), grid->rowCount(), 0, 1, grid->columnCount());
}

/** Drops the keys that would answer the box by a letter alone. */
class BareLettersDropped : public QObject {
  public:
    using QObject::QObject;

    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        if (event->type() != QEvent::KeyPress) {
            return false;
        }
        const auto& key = *static_cast<QKeyEvent*>(event);
        constexpr auto commands = Qt::AltModifier | Qt::ControlModifier | Qt::MetaModifier;
        const QString text = key.text();
        return !(key.modifiers() & commands) && !text.isEmpty() && text.front().isPrint();
    }
};

/** Makes the box look like the program's windows: no icons on buttons, and text on the side where one reads.
 */
void matchTheWindows(QMessageBox& dialog) {
    for (QAbstractButton* button : dialog.buttons()) {
        button->setIcon(QIcon());
        if (auto* const push = qobject_cast<QPushButton*>(button)) {
            giveCaptionRoom(*push);
        }
    }
    auto* const text = dialog.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
    if (text != nullptr && dialog.isRightToLeft()) {
        // Qt would align the text by the direction of its letters.
        text->setAlignment(Qt::AlignRight | Qt::AlignAbsolute | Qt::AlignVCenter);
    }
}
} // namespace

MessageAnswer showMessageBox(const MessageBox& box) {
    const platform::NestedWait wait;
    if (const auto& standIn = messageBoxStandIn()) {
        return standIn(box);
    }
    const bool yesNo = box.buttons == MessageButtons::YesNo;
    // A disabled window cannot be the parent: its box would be disabled with it.
    QWidget* active = QApplication::activeWindow();
    QMessageBox dialog(active != nullptr && active->isEnabled() ? active : nullptr);
    dialog.setObjectName(QStringLiteral("messageBox"));
    dialog.setIcon(iconOf(box.icon));
    dialog.setTextFormat(Qt::PlainText);
    dialog.setText(QApplication::isRightToLeft() ? platform::inItsOwnOrder(box.text) : box.text);
    dialog.setWindowTitle(box.title);
    dialog.setStandardButtons(yesNo ? QMessageBox::Yes | QMessageBox::No : QMessageBox::Ok);
    matchTheWindows(dialog);
    makeRoom(dialog);
    if (yesNo) {
        dialog.setDefaultButton(buttonFor(box.defaultAnswer));
        dialog.setEscapeButton(buttonFor(box.closingAnswer));
    }
    if (!box.takesBareLetters) {
        dialog.installEventFilter(new BareLettersDropped(&dialog));
    }
    QWidget* const opener = active != nullptr ? active : windowThatIsSeen();
    if (dialog.parentWidget() == nullptr) {
        standAbove(dialog, opener);
    }
    if (!box.leftFree.isEmpty() && opener != nullptr) {
        placeBeside(box.leftFree, *opener, dialog);
    }
    const int answer = dialog.exec();
    if (!yesNo) {
        return MessageAnswer::Ok;
    }
    return answer == QMessageBox::Yes ? MessageAnswer::Yes : MessageAnswer::No;
}

void prepareMessageBoxes() {
    static bool prepared = false;
    if (std::exchange(prepared, true)) {
        return;
    }
    QMessageBox never;
    never.setText(QStringLiteral("."));
    never.setStandardButtons(QMessageBox::Ok | QMessageBox::Yes | QMessageBox::No);
}

void showMessage(const QString& text, const QString& title) {
    showMessageBox({text, title, MessageIcon::None, MessageButtons::Ok});
}

QString textOfError(int errorNumber) {
    return QStringLiteral("Run-time error %1\n\n%2")
        .arg(errorNumber)
        .arg(QString::fromStdString(platform::meaningOf(errorNumber)));
}

void reportError(int errorNumber) {
    showMessageBox({textOfError(errorNumber), QStringLiteral("Brindlewake"), MessageIcon::Exclamation,
                    MessageButtons::Ok});
}

void replaceMessageBox(std::function<MessageAnswer(const MessageBox&)> standIn) {
    messageBoxStandIn() = std::move(standIn);
}

} // namespace controls
