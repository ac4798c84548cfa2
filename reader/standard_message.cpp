#include "reader/standard_message.h"

#include "email/own_files.h"
#include "platform/background.h"
#include "platform/drives.h"
#include "platform/private_file.h"
#include "platform/runtime_error.h"
#include "reader/message_fields.h"
#include "windows/frmFrom.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>

#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace {
const StandardAttachment& chosenAttachment(const frmFrom& window) {
    return window.Read.attachments.at(static_cast<std::size_t>(window.cboAttached->currentIndex()));
}

void listAttachments(frmFrom& window) {
    for (const StandardAttachment& attachment : window.Read.attachments) {
        window.cboAttached->addItem(
            oneLine(attachment.name) +
            QStringLiteral(" (%1 bytes)").arg(static_cast<qlonglong>(attachment.bytes)));
    }
    const bool hasAny = !window.Read.attachments.empty();
    window.cboAttached->setCurrentIndex(hasAny ? 0 : -1);
    window.cboAttached->setEnabled(hasAny);
    window.cmdSave->setEnabled(hasAny);
}
} // namespace

void showStandardMessage(email::MessageSummary& message, frmFrom& window) {
    const StandardReader& reader = standardReader();
    const auto original = std::make_shared<const ReceivedMessage>(
        ReceivedMessage{std::exchange(message.RawHeader, {}), std::exchange(message.BodyText, {})});
    readWhereItBelongs(original->body.size(),
                       [&] { window.Read = reader.read(original->header, original->body); });
    message.From = window.Read.fields.from;
    message.Subject = window.Read.fields.subject;
    message.Date = window.Read.fields.date;
    window.Answered = {window.Read.messageId, window.Read.references, original};
    showFields(message, window);
    listAttachments(window);
    window.tMessage->setBytes(std::exchange(window.Read.text, {}));
}

void emptyAttachments(frmFrom& window) {
    if (window.txtAttachments != nullptr) {
        window.txtAttachments->clear();
        return;
    }
    window.cboAttached->clear();
    window.cboAttached->setEnabled(false);
    // The attachments refer to the message that goes.
    window.Read = {};
    window.Answered = {};
}

QString chosenAttachmentName(const frmFrom& window) {
    return QString::fromStdString(chosenAttachment(window).name);
}

void saveChosenAttachment(const frmFrom& window, const QString& drivePath) {
    const StandardAttachment& attachment = chosenAttachment(window);
    // Each step may wait for a slow or missing disk.
    platform::runInBackground([&] {
        if (email::isOwnFile(drivePath)) {
            throw platform::RuntimeError(platform::errors::OwnFile);
        }
        platform::PrivateOutput output(platform::nativePath(drivePath), platform::Writing::BesideTarget);
        standardReader().decode(attachment, [&output](std::string_view bytes) { output.write(bytes); });
        output.finish();
    });
}
