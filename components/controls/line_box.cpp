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
    // A change that is not valid is taken back as a whole. The maximum is above what is valid, so that it
    // cuts only what will be taken back: until then each pasted letter is remembered, and each that fits
    // costs a copy of all of them. What the program itself adds to a full field has room in between.
    setMaxLength(kMostCharacters + kMostCharacters / 10);
    setValidator(new Length(this));
    connect(this, &QLineEdit::inputRejected, this, &LineBox::tellLater);
}

/** Later, since who drops a text waits for this program meanwhile. */
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
