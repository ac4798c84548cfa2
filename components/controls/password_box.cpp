#include "components/controls/password_box.h"

#include <QAccessible>
#include <QAccessibleWidget>

namespace controls {

namespace {
class PasswordBoxForReaders : public QAccessibleWidget {
  public:
    explicit PasswordBoxForReaders(QWidget* box) : QAccessibleWidget(box, QAccessible::EditableText) {}

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.passwordEdit = true;
        state.editable = true;
        return state;
    }
};

/** Qt calls this for every object that a screen reader asks for. */
QAccessibleInterface* passwordForReaders(const QString& /*className*/, QObject* object) {
    auto* const box = dynamic_cast<PasswordBox*>(object);
    return box == nullptr ? nullptr : new PasswordBoxForReaders(box);
}
} // namespace

PasswordBox::PasswordBox(QWidget* parent) : QLineEdit(parent) {
    setEchoMode(Password);
    // Installed once, however many fields there are.
    static const bool installed = [] {
        QAccessible::installFactory(passwordForReaders);
        return true;
    }();
    static_cast<void>(installed);
}

void PasswordBox::forget() {
    // The letters are shared with the field and overwritten in place, since QString would copy them before a
    // change.
    const QString held = text();
    // A text without a capacity is a constant of the program's, which may be read-only and was not typed.
    if (held.capacity() > 0) {
        for (const QChar& letter : held) {
            static_cast<volatile char16_t&>(const_cast<QChar&>(letter).unicode()) = u'*';
        }
    }
    setText({});
}

} // namespace controls
