#include "retrieval/failures.h"

#include "components/controls/message_box.h"
#include "email/titles.h"

void tell(const FailureBox& box, int error) {
    QString text = QLatin1String(box.text);
    if (!text.isEmpty()) {
        controls::showMessage(text.replace(QLatin1String("%1"), QString::number(error)),
                              email::titleEndingIn(box.titleEnding));
    }
}
