#include "windows/form.h"

#include "components/controls/button_room.h"
#include "components/controls/early_window.h"
#include "components/controls/resting_palette.h"
#include "email/shared_settings.h"
#include "platform/reading_order.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QApplication>
#include <QEvent>
#include <QFontMetrics>
#include <QLabel>
#include <QLayout>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QShortcut>

namespace {
/** Makes a window known to screen readers as a window: Qt gives a plain QWidget a role that they skip. */
QAccessibleInterface* forReaders(const QString& /*className*/, QObject* object) {
    auto* const window = dynamic_cast<Form*>(object);
    return window == nullptr ? nullptr : new QAccessibleWidget(window, QAccessible::Window);
}
} // namespace

WhileDisabled::WhileDisabled(Form& window) {
    if (window.isEnabled()) {
        enabledBefore_ = &window;
        window.rest();
    }
}

WhileDisabled::WhileDisabled(QWidget& control) {
    // The control's own state counts, not that of its window.
    if (control.isEnabledTo(control.parentWidget())) {
        enabledBefore_ = &control;
        control.setEnabled(false);
    }
}

WhileDisabled::~WhileDisabled() {
    if (enabledBefore_) {
        enabledBefore_->setEnabled(true);
    }
}

WhileHourglass::WhileHourglass(Form& window) {
    if (!window.hourglass_) {
        normalBefore_ = &window;
        window.setHourglass(true);
    }
}

WhileHourglass::~WhileHourglass() {
    if (normalBefore_) {
        normalBefore_->setHourglass(false);
    }
}

Form::Form(const QString& objectName, const QString& caption) {
    setObjectName(objectName);
    setWindowTitle(caption);
    setPalette(controls::legibleWhileResting(QApplication::palette()));
    // Installed once, however many windows there are.
    static const bool installed = [] {
        QAccessible::installFactory(forReaders);
        return true;
    }();
    static_cast<void>(installed);
}

void Form::setHourglass(bool on) {
    hourglass_ = on;
    if (!on) {
        unsetCursor();
        for (const auto& [part, pointer] : std::exchange(ownPointers_, {})) {
            if (part) {
                part->setCursor(pointer);
            }
        }
        return;
    }
    setCursor(Qt::WaitCursor);
    for (QWidget* part : findChildren<QWidget*>()) {
        // A text field has a pointer of its own, which would be shown in place of the window's.
        if (part->testAttribute(Qt::WA_SetCursor) && part->window() == this) {
            ownPointers_.emplace_back(part, part->cursor());
            part->setCursor(Qt::WaitCursor);
        }
    }
}

void Form::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange) {
        // This causes another PaletteChange, unless the palette is the same as before.
        setPalette(controls::legibleWhileResting(QApplication::palette()));
    }
    QWidget::changeEvent(event);
}

void Form::paintEvent(QPaintEvent* event) {
    QWidget::paintEvent(event);
    if (isEnabled()) {
        return;
    }
    constexpr int width = 4; // within the margin that every window has around its controls
    QPainter painter(this);
    const QColor colour = controls::halfway(palette().color(QPalette::Active, QPalette::WindowText),
                                            palette().color(QPalette::Active, QPalette::Window));
    painter.setPen(QPen(colour, width, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawRect(rect().adjusted(width / 2, width / 2, -width / 2, -width / 2));
}

void Form::prepare() {
    if (windowHandle() != nullptr) {
        return;
    }
    controls::makeSystemWindow(*this);
    {
        // This loads the hourglass pointer.
        const WhileHourglass shown(*this);
    }
    // Painting loads fonts and styles and computes the layout.
    grab();
    controls::makeRoomForPicture(*this);
}

void Form::bringUp() {
    setWindowState(windowState() & ~Qt::WindowStates(Qt::WindowMinimized));
    show();
    raise();
    activateWindow();
}

void Form::rest() {
    keptFocus_.remember();
    setEnabled(false);
}

void Form::takeControlFrom(Form& opener) {
    opener_ = &opener;
    openerRests_.emplace(opener);
}

void Form::giveControlBack() {
    if (!openerRests_) {
        return;
    }
    openerRests_.reset();
    if (opener_) {
        opener_->bringUp();
    }
}

void Form::letReturnPressButtons() {
    for (QPushButton* button : findChildren<QPushButton*>()) {
        button->setAutoDefault(true);
    }
}

void Form::giveCaptionsRoom() {
    for (QPushButton* button : findChildren<QPushButton*>()) {
        controls::giveCaptionRoom(*button);
    }
    layout()->activate();
}

// Qt aligns a label by the direction of its text, so a Latin caption would stand at the wrong end of the
// window, or away from its field.
void Form::mirrorLabels() {
    for (QLabel* label : findChildren<QLabel*>()) {
        const Qt::Alignment before = label->alignment();
        const bool mirrored = before.testFlag(Qt::AlignAbsolute);
        if (!isRightToLeft() || mirrored || (before & (Qt::AlignLeft | Qt::AlignRight)) == 0) {
            continue;
        }
        const auto side = before.testFlag(Qt::AlignLeft) ? Qt::AlignRight : Qt::AlignLeft;
        label->setAlignment(side | Qt::AlignAbsolute | (before & Qt::AlignVertical_Mask));
    }
}

// Otherwise Qt would show the dots of "Attach..." in front of the word.
void Form::keepCaptionsInTheirOrder() {
    for (QPushButton* button : findChildren<QPushButton*>()) {
        if (isRightToLeft() && button->text().endsWith(u'.')) {
            button->setText(platform::inItsOwnOrder(button->text()));
        }
    }
}

void Form::takeProgramTitle() {
    if (!email::derived.WindowTitle.isNull()) {
        setWindowTitle(email::derived.WindowTitle);
    }
}

void Form::closeOnEscape() {
    auto* escape = new QShortcut(Qt::Key_Escape, this);
    QObject::connect(escape, &QShortcut::activated, this, [this] { close(); });
}

void Form::setTabSequence(std::initializer_list<QWidget*> controls) {
    QWidget* previous = nullptr;
    for (QWidget* control : controls) {
        if (previous != nullptr) {
            setTabOrder(previous, control);
        }
        previous = control;
    }
}

void Form::resizeToText(int letters, int lines) {
    const QFontMetrics metrics(font());
    const QSize wanted(letters * metrics.averageCharWidth(), lines * metrics.lineSpacing());
    resize(wanted.boundedTo(screen()->availableSize() * 9 / 10).expandedTo(minimumSizeHint()));
}
