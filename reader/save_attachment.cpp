#include "components/controls/message_box.h"
#include "email/box_texts.h"
#include "email/opening.h"
#include "email/own_files.h"
#include "email/shared_settings.h"
#include "email/titles.h"
#include "message/mail_mode.h"
#include "message/safe_file_name.h"
#include "platform/background.h"
#include "platform/drives.h"
#include "platform/private_file.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "reader/standard_message.h"
#include "windows/frmFrom.h"
#include "windows/frmMain.h"
#include "windows/windows.h"

using netcodelib::Action;
using netcodelib::NetCode;

namespace {
/** Fails before decoding when the disk or the folder cannot be used. An existing file stays as it is. */
void tryToWrite(const QString& path) {
    const platform::PrivateOutput trial(platform::nativePath(path), platform::Writing::BesideTarget);
}

/** Runs in the background, since each step may wait for a slow or missing disk. */
void writeDecoded(NetCode& codec, const QString& target) {
    if (email::isOwnFile(target)) {
        throw platform::RuntimeError(platform::errors::OwnFile);
    }
    tryToWrite(target);
    codec.setAction(Action::Decode);
}

void save(NetCode& codec, const QString& target, const QString& name) {
    codec.setOverwrite(true);
    codec.setSourceFile(QLatin1String(email::kEncodedAttachmentFileName));
    codec.setTargetFile(target);
    codec.setCodingFormat(NetCode::kBase64);
    codec.setFileName(name);
    platform::runInBackground([&] { writeDecoded(codec, target); });
    codec.setAction(Action::None);
}
} // namespace

void frmFrom::cmdSave_Click() {
    QString path;
    const int error = platform::errorNumberOf([&] {
        const WhileDisabled resting(*this);
        const WhileHourglass waiting(*this);
        const bool isStandard = mailMode() == MailMode::Standard;
        const QString name =
            isStandard ? chosenAttachmentName(*this) : platform::fromBytes(email::opening.CurrentAttachment);
        path = email::settings.SaveDirectory + safeFileName(name);
        if (isStandard) {
            saveChosenAttachment(*this, path);
        } else {
            save(mainWindow().ctrDecode, path, name);
        }
    });
    if (error != 0) {
        controls::showMessage(email::boxOfFailedSaving(error), email::programTitle());
        return;
    }
    controls::showMessage(QStringLiteral("Attachment has been saved to: ") + path,
                          QStringLiteral("Brindlewake"));
}
