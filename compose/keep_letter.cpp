#include "components/controls/message_box.h"
#include "email/box_texts.h"
#include "email/credentials.h"
#include "email/shared_settings.h"
#include "email/titles.h"
#include "message/kept_letter.h"
#include "platform/runtime_error.h"
#include "platform/user_folders.h"
#include "platform/while_true.h"
#include "windows/frmSend.h"

#include <QDir>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace {
/** The delay counts from the first change that is not kept yet. Further typing does not put it off. */
constexpr int kDelayMs = 2000;
/** The delay is at least this many times what keeping took last, so that a long letter is kept less often. */
constexpr int kTimesLonger = 20;
constexpr int kLongestDelayMs = 10'000;

QString senderAddress() {
    return email::credentials.UserName + email::derived.AtDomain;
}

/**
 * Returns the path of the file for this sender's letter in the current folder; empty when there is no folder
 * for the program's state.
 */
QString pathOfKeptLetter() {
    QString path;
    static_cast<void>(platform::errorNumberOf([&] {
        path = platform::stateFolder().path + u'/' +
               keptLetterName(senderAddress(), QDir::current().canonicalPath());
    }));
    return path;
}

KeptLetter letterIn(const frmSend& window) {
    return {.to = window.tTo->text(),
            .copies = window.tCc->text(),
            .subject = window.tSubject->text(),
            .attachment = window.txtAttachment->text(),
            .text = window.tMessage->bytes(),
            .origin = window.origin};
}

/** Returns a digest of what the file holds; never 0, which stands for no file. */
std::size_t digestOf(const std::string& file) {
    return std::hash<std::string>()(file) | 1U;
}
} // namespace

bool frmSend::goOnWithKeptLetter() {
    keptLetter.setPath(pathOfKeptLetter());
    if (!keptLetter.hasPath()) {
        lblSending->setText(email::noteOfUnkeptLetter(platform::errors::PathFileAccess));
        return false;
    }
    const auto file = keptLetter.read();
    const auto letter = file ? keptLetterIn(*file) : std::nullopt;
    if (!letter) {
        return false;
    }
    const platform::WhileTrue offering(offering_);
    controls::MessageBox offer{
        QStringLiteral("A letter that you were writing was neither sent nor cancelled.\n\nDo you want to go "
                       "on with it? No removes it."),
        email::programTitle(), controls::MessageIcon::Question, controls::MessageButtons::YesNo};
    offer.closingAnswer = controls::MessageAnswer::Yes;
    // Whoever has pressed Compose may be typing the new letter's address by now.
    offer.takesBareLetters = false;
    if (controls::showMessageBox(offer) == controls::MessageAnswer::No) {
        keptLetter.remove();
        return false;
    }
    keptDigest_ = digestOf(*file);
    tTo->setText(letter->to);
    tCc->setText(letter->copies);
    tSubject->setText(letter->subject);
    if (txtAttachment->isEnabled()) {
        txtAttachment->setText(letter->attachment);
    }
    tMessage->setBytes(letter->text);
    origin = letter->origin;
    if (!txtAttachment->isEnabled()) {
        origin.original.reset();
    }
    return true;
}

void frmSend::letter_Change() {
    if (keptLetter.hasPath() && !tmrKeepLetter->isEnabled()) {
        tmrKeepLetter->setPeriod(std::clamp(keepingMs_ * kTimesLonger, kDelayMs, kLongestDelayMs));
        tmrKeepLetter->setEnabled(true);
    }
}

void frmSend::tmrKeepLetter_Timer() {
    tmrKeepLetter->setEnabled(false);
    if (keptLetter.isWriting()) {
        letter_Change();
        return;
    }
    QElapsedTimer sinceStart;
    sinceStart.start();
    const int error = platform::errorNumberOf([&] {
        if (std::string file = letterToKeep(); !file.empty()) {
            keptLetter.write(std::move(file), [this, sinceStart](int writingError) {
                keepingMs_ = static_cast<int>(sinceStart.elapsed());
                letterKept(writingError);
            });
        }
    });
    if (error != 0) {
        letterKept(error);
    }
}

/** Returns what to write into the file; empty when it holds that already. Removes an empty letter's file. */
std::string frmSend::letterToKeep() {
    const KeptLetter letter = letterIn(*this);
    std::string file = isEmpty(letter, senderAddress()) ? std::string() : keptLetterFile(letter);
    const std::size_t digest = file.empty() ? 0 : digestOf(file);
    if (std::exchange(keptDigest_, digest) == digest) {
        return {};
    }
    if (file.empty()) {
        keptLetter.remove();
    }
    return file;
}

void frmSend::letterKept(int error) {
    if (error != 0) {
        // The next try writes the letter even when it has not changed by then.
        keptDigest_ = 0;
        letter_Change();
    }
    const bool told = lblSending->text().startsWith(email::noteOfUnkeptLetter(0).chopped(1));
    if (!sending_ && (error != 0 || told)) {
        lblSending->setText(error != 0 ? email::noteOfUnkeptLetter(error) : QString());
    }
}

void frmSend::keepLetterNow() {
    if (!keptLetter.hasPath()) {
        return;
    }
    // The writer may still be writing an earlier state of the letter.
    keptLetter.waitForWriter();
    if (const std::string file = letterToKeep(); !file.empty()) {
        keptLetter.writeNow(file);
    }
}

void frmSend::removeKeptLetter() {
    tmrKeepLetter->setEnabled(false);
    if (keptLetter.hasPath()) {
        keptLetter.remove();
        keptLetter.setPath({});
        keptDigest_ = 0;
    }
}
