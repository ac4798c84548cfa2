#include "email/state.h"
#include "platform/background.h"
#include "platform/drives.h"
#include "platform/message_box.h"
#include "platform/private_file.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "reader/attachment_file.h"
#include "reader/attachment_name.h"
#include "windows/frmFrom.h"
#include "windows/frmMain.h"
#include "windows/windows.h"

using NetCodeLib::Action;
using NetCodeLib::NetCode;

namespace {
/** Fails early when the disk or the folder cannot be used, and leaves a file that is there alone. */
void tryToWrite(const QString& path) {
    const platform::PrivateOutput trial(platform::nativePath(path), platform::Writing::BesideTarget);
}

void decode(NetCode& codec, const QString& target, const QString& name) {
    codec.setOverwrite(true);
    codec.setSourceFile(QLatin1String(kEncodedAttachmentFile));
    codec.setTargetFile(target);
    codec.setCodingFormat(NetCode::kBase64);
    codec.setFileName(name);
    platform::runInBackground([&codec] { codec.setAction(Action::Decode); });
    codec.setAction(Action::None);
}
} // namespace

void frmFrom::cmdSave_Click() {
    QString path;
    const int error = platform::errorNumberOf([&] {
        const WhileDisabled resting(*this);
        const WhileHourglass waiting(*this);
        const QString name = platform::fromBytes(email::state.CurrentAttachment);
        requireSafeName(name);
        path = email::settings.SaveDirectory + name;
        tryToWrite(path);
        decode(mainWindow().ctrDecode, path, name);
    });
    if (error != 0) {
        platform::showMessage(QStringLiteral("Please make sure disk is ready. Error#") +
                                  QString::number(error),
                              email::settings.Institution + QStringLiteral(" E-Mail"));
        return;
    }
    platform::showMessage(QStringLiteral("Attachment has been saved to: ") + path,
                          QStringLiteral("Brindlewake"));
}
