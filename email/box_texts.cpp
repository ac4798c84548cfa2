#include "email/box_texts.h"

#include "platform/runtime_error.h"

namespace email {

QString boxOfFailedStart(int error) {
    return error == platform::errors::FileNotFound
               ? QStringLiteral("You must configure Brindlewake!")
               : QStringLiteral("Problem starting Brindlewake. Error# ") + QString::number(error);
}

QString boxOfHiddenProgram() {
    return QStringLiteral(
        "Brindlewake is already running in this folder, and its window cannot be shown from "
        "here.\n\nUse it where it was started, perhaps on another screen, or end it there and "
        "start again.");
}

QString boxOfFailedOpening(int error) {
    return QStringLiteral("There is an error in the message header. Error# ") + QString::number(error);
}

QString boxOfUnshowableMessage() {
    return QStringLiteral("There was a problem with the message header.");
}

QString boxOfFailedSaving(int error) {
    return QStringLiteral("Please make sure disk is ready. Error#") + QString::number(error);
}

QString boxOfFailedSending(int error) {
    return QStringLiteral("Unable to send message. Error# ") + QString::number(error);
}

QString noteOfUnkeptLetter(int error) {
    return QStringLiteral("This letter is not kept. Error# ") + QString::number(error);
}

} // namespace email
