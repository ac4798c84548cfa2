#include "retrieval/failures.h"

#include "components/controls/message_box.h"
#include "email/titles.h"

QString textOf(const FailureBox& box, int error) {
    return QString(QLatin1String(box.text)).replace(QLatin1String("%1"), QString::number(error));
}

void tell(const FailureBox& box, int error) {
    const QString text = textOf(box, error);
    if (!text.isEmpty()) {
        controls::showMessage(text, email::titleEndingIn(box.titleEnding));
    }
}
