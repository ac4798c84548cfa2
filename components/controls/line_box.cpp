#include "components/controls/line_box.h"

#include "components/controls/message_box.h"

#include <QValidator>

#include <utility>

namespace controls {

namespace {
class Length : public QValidator {
  public:
    using QValidator::QValidator;

    State validate(QString& text, int& /*cursor*/) const override {
        return text.size() > LineBox::kMostCharacters ? Invalid : Acceptable;
    }
};
} // namespace

LineBox::LineBox(QWidget* parent) : QLineEdit(parent) {
    // The validator takes an invalid change back as a whole. The maximum length bounds the work until then:
    // Qt remembers each pasted letter, and each that fits costs a copy of the whole text. It is above what is
    // valid, so it cuts only what is taken back, and leaves room for what the program adds to a full field.
    setMaxLength(kMostCharacters + kMostCharacters / 10);
    setValidator(new Length(this));
    connect(this, &QLineEdit::inputRejected, this, &LineBox::tellLater);
}

/** Shows the box later: during a drop, the program that the text comes from waits until this one returns. */
void LineBox::tellLater() {
    if (std::exchange(telling_, true)) {
        return;
    }
    const auto tell = [this] {
        controls::showMessage(
            QStringLiteral("This is too long for one line: at most %1 characters.").arg(kMostCharacters),
            QStringLiteral("Brindlewake"));
        telling_ = false;
    };
    QMetaObject::invokeMethod(this, tell, Qt::QueuedConnection);
}

} // namespace controls
