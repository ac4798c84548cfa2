#include "components/controls/message_box.h"
#include "components/smtplib/message.h"
#include "email/box_texts.h"
#include "email/credentials.h"
#include "email/own_files.h"
#include "email/protections.h"
#include "email/shared_settings.h"
#include "email/titles.h"
#include "email/typed_host.h"
#include "message/writer_in_use.h"
#include "platform/background.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "platform/while_true.h"
#include "windows/frmSend.h"
#include "windows/windows.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <cstddef>
#include <string>
#include <utility>

using smtplib::Request;
namespace errors = platform::errors;

namespace {
constexpr const char* kEncodedFile = email::kEncodedOutgoingFileName;

EncodedFile encodeAttachment(NetCodeLib::NetCode& codec, const QString& attachment,
                             std::string_view closingLine) {
    codec.setSourceFile(attachment);
    codec.setCodingFormat(netcodelib::NetCode::kBase64);
    codec.setTargetFile(QLatin1String(kEncodedFile));
    codec.setOverwrite(true);
    codec.setClosingText(std::string(closingLine));
    // The windows stay responsive while a large file is encoded.
    platform::runInBackground([&codec] { codec.setAction(netcodelib::Action::Encode); });
    return {codec.targetFile(), codec.takeEncodedFile()};
}

void refuse(const QString& text, QLineEdit* missing) {
    controls::showMessage(text, email::programTitle());
    missing->setFocus();
}

std::string sendersAddress() {
    return platform::toBytes(email::credentials.UserName + email::derived.AtDomain);
}

smtplib::Account sendersAccount() {
    const email::Credentials& credentials = email::credentials;
    return {platform::toBytes(credentials.UserName), platform::toBytes(credentials.Password),
            platform::toBytes(credentials.NameAtHost)};
}

smtplib::Message fieldsIn(const frmSend& window) {
    const MessageWriter& writer = writerInUse();
    smtplib::Message message;
    message.sender = sendersAddress();
    message.recipients = writer.bytesOf(window.tTo->text());
    message.copies = writer.bytesOf(window.tCc->text());
    message.subject = writer.bytesOf(window.tSubject->text());
    return message;
}

/** Gives the field the keyboard focus and selects the bytes from begin to end of its text, which is UTF-8. */
void mark(QLineEdit* field, const std::string& text, std::size_t begin, std::size_t end) {
    const auto unitsBefore = [&text](std::size_t bytes) {
        return static_cast<int>(QString::fromUtf8(text.data(), static_cast<qsizetype>(bytes)).size());
    };
    field->setFocus();
    field->setSelection(unitsBefore(begin), unitsBefore(end) - unitsBefore(begin));
}

/** Selects the first address, or the subject, that the error is about; nothing for any other error. */
void markWhatIsWrong(const frmSend& window, int error) {
    for (QLineEdit* field : {window.tTo, window.tCc}) {
        const std::string text = writerInUse().bytesOf(field->text());
        const auto fault = writerInUse().findFault(text, error);
        if (fault) {
            mark(field, text, fault->begin, fault->end);
            return;
        }
    }
    if (error == errors::NoRecipient || error == errors::FieldHoldsLineEnd) {
        QLineEdit* const field = error == errors::NoRecipient ? window.tTo : window.tSubject;
        field->setFocus();
        field->selectAll();
    }
}
} // namespace

void frmSend::cmdSndit_Click() {
    // The user may press Send again: the windows stay responsive while a file is encoded.
    if (sending_) {
        return;
    }
    const platform::WhileTrue sending(sending_);
    closeFinding();
    const int error = platform::errorNumberOf([this] { send(); });
    if (error == 0) {
        return;
    }
    lblSending->setText(QString());
    barSending->setProgress(0);
    if (!isVisible()) {
        bringUp();
    }
    controls::showMessage(email::boxOfFailedSending(error), email::programTitle());
    markWhatIsWrong(*this, error);
}

void frmSend::send() {
    // The message is composed before the fields are checked, so that the encoded file is written even when
    // they are refused.
    ComposedMessage message =
        writerInUse().compose({tMessage->bytes(), txtAttachment->text(), origin},
                              [this](const QString& file, std::string_view line) {
                                  // The user can neither close the window nor cancel while a file is encoded.
                                  const WhileDisabled resting(*this);
                                  const WhileHourglass waiting(*this);
                                  lblSending->setText(QStringLiteral("Encoding the attachment..."));
                                  EncodedFile encoded = encodeAttachment(ctrNetcode, file, line);
                                  lblSending->setText(QString());
                                  return encoded;
                              });
    if (tTo->text().isEmpty()) {
        refuse(QStringLiteral("You need to enter an e-mail address to send to."), tTo);
        return;
    }
    if (tSubject->text().isEmpty()) {
        refuse(QStringLiteral("You need to enter a subject."), tSubject);
        return;
    }
    transmit(std::move(message));
    unload(*this);
}

void frmSend::transmit(ComposedMessage message) {
    lblSending->setText(QStringLiteral("Sending Mail... "));
    const WhileDisabled noSending(*cmdSndit);
    const WhileDisabled noCancelling(*cmdCancel);
    // This lasts: after a failure, too, Attach stays disabled.
    cmdAttach->setEnabled(false);
    // The client connects to no server for fields that it would refuse.
    writerInUse().check(fieldsIn(*this));
    SMTP1.setBlocking(true);
    SMTP1.setHost(email::sendingServer());
    SMTP1.setAccount(sendersAccount());
    SMTP1.issueRequest(Request::OpenConnection);
    const smtplib::Message fields = fieldsIn(*this);
    SMTP1.setSender(fields.sender);
    SMTP1.setRecipients(fields.recipients);
    SMTP1.setCopies(fields.copies);
    SMTP1.setSubject(fields.subject);
    SMTP1.setForm(std::move(message.form));
    SMTP1.setAdditionalHeaders(message.ExtraHeaders);
    SMTP1.setBody(message.MessageBody);
    SMTP1.setDataFile(message.DataFile.path, std::move(message.DataFile.file));
    SMTP1.setDataFileEncoded(true);
    {
        const WhileHourglass waiting(*this);
        SMTP1.issueRequest(Request::TransmitMessage);
    }
    // The server has accepted the message. A letter kept beyond this point could be sent twice.
    removeKeptLetter();
    SMTP1.issueRequest(Request::CloseConnection);

    lblSending->setText(QString());
    barSending->setProgress(0);
    controls::showMessage(QStringLiteral("Your message has been sent."), email::programTitle());
}

void frmSend::SMTP1_PITrail(smtplib::Direction /*Direction*/, const std::string& /*Message*/) {
    // The dialogue is neither logged nor shown.
}

void frmSend::SMTP1_Protected(const transport::Protection& protection) {
    email::protections.SMTPServer = protection;
}

void frmSend::SMTP1_Progress(std::int64_t bytesDone, std::int64_t bytesTotal) {
    constexpr std::int64_t steps = 1000;
    barSending->setMax(steps);
    barSending->setProgress(bytesTotal > 0 ? static_cast<int>(bytesDone * steps / bytesTotal) : 0);
}
