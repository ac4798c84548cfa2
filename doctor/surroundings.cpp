#include "doctor/surroundings.h"

#include "addresses/directory_troubles.h"
#include "components/controls/message_box.h"
#include "components/controls/picture.h"
#include "components/controls/wave_player.h"
#include "components/transport/stream.h"
#include "email/box_texts.h"
#include "email/own_files.h"
#include "message/word_wrap.h"
#include "platform/own_library.h"
#include "platform/runtime_error.h"
#include "platform/text_printer.h"
#include "retrieval/log_in_failures.h"

#include <QFileInfo>
#include <QFont>
#include <QFontDatabase>
#include <QFontInfo>

#include <array>

namespace doctor {

namespace errors = platform::errors;

namespace {
Finding about(const char* what, Grade grade, const QString& text, const QString& advice = {}) {
    Finding finding;
    finding.grade = grade;
    finding.about = QLatin1String(what);
    finding.text = text;
    finding.advice = advice;
    return finding;
}

void addLogo(std::vector<Finding>& findings) {
    const QString file = QLatin1String(email::kLogoFileName);
    const int error = platform::errorNumberOf([&file] { static_cast<void>(controls::LoadPicture(file)); });
    if (error == errors::FileNotFound) {
        findings.push_back(about("logo", Grade::Info,
                                 QStringLiteral("No %1: the login window has no logo.").arg(file),
                                 QStringLiteral("Link the picture into this folder.")));
    } else if (error != 0) {
        findings.push_back(about("logo", Grade::Met,
                                 QStringLiteral("%1 is no picture: the login window has no logo.").arg(file),
                                 QStringLiteral("Put a picture there.")));
        findings.back().number = error;
    } else {
        findings.push_back(about("logo", Grade::Info, QStringLiteral("%1 is a picture.").arg(file)));
    }
}

void addSound(const email::Settings& settings, std::vector<Finding>& findings) {
    if (!email::isYes(settings.PlayWav)) {
        return;
    }
    const QFileInfo file{QLatin1String(email::kNewMailSoundFileName)};
    if (!file.isFile() || !file.isReadable()) {
        findings.push_back(
            about("sound", Grade::Met,
                  QStringLiteral("No %1 to be read here: new mail makes no sound.").arg(file.fileName()),
                  QStringLiteral("Link the sound into this folder.")));
    } else if (!controls::hasSoundLibrary()) {
        findings.push_back(about("sound", Grade::Met,
                                 QStringLiteral("There is no library for sounds: new mail makes none."),
                                 QStringLiteral("Install libcanberra0.")));
    } else {
        findings.push_back(
            about("sound", Grade::Info,
                  QStringLiteral("%1 and the library for sounds are there.").arg(file.fileName())));
    }
}

void addPrinter(const email::Settings& settings, std::vector<Finding>& findings) {
    if (!email::isYes(settings.AllowPrinting)) {
        return;
    }
    const QString name = platform::defaultPrinterName();
    if (name.isEmpty()) {
        findings.push_back(about("printer", Grade::Met, QStringLiteral("There is no default printer."),
                                 QStringLiteral("Set one up in CUPS, or set AllowPrinting=no.")));
        findings.back().number = errors::PrinterError;
        findings.back().box = controls::textOfError(errors::PrinterError);
    } else {
        findings.push_back(
            about("printer", Grade::Info, QStringLiteral("The default printer is %1.").arg(name)));
    }
}

void addFonts(std::vector<Finding>& findings) {
    if (QFontDatabase::families().isEmpty()) {
        findings.push_back(about("fonts", Grade::Stops,
                                 QStringLiteral("There is no font: the windows have no letters."),
                                 QStringLiteral("Install fonts-dejavu-core and fonts-liberation.")));
        return;
    }
    const QString printed = QFontInfo(QFont(QLatin1String(kPrintedFamily))).family();
    const bool sameWidths =
        printed == QLatin1String(kPrintedFamily) || printed.startsWith(QLatin1String("Liberation Sans"));
    findings.push_back(
        about("fonts", Grade::Info, QStringLiteral("Messages are printed in %1.").arg(printed),
              sameWidths ? QString() : QStringLiteral("Install fonts-liberation for the widths of Arial.")));
    const QFontInfo shown(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    findings.push_back(
        about("fonts", Grade::Info,
              shown.fixedPitch()
                  ? QStringLiteral("Messages are shown in %1.").arg(shown.family())
                  : QStringLiteral("No letters of one width: messages are shown in %1.").arg(shown.family()),
              shown.fixedPitch() ? QString() : QStringLiteral("Install fonts-dejavu-core.")));
}

/** What the window of Find Address tells without its library. */
QString lineOfFindAddress(int /*error*/) {
    return QString::fromStdString(addresses::troubleOf({addresses::DirectoryEnd::Kind::NoLibrary}));
}

struct OwnLibrary {
    const char* file;
    /** A function that it has. */
    const char* function;
    Grade grade;
    const char* without;
    int number;
    QString (*box)(int error);
};

void addLibraries(std::vector<Finding>& findings) {
    const std::array<OwnLibrary, 6> libraries = {{
        {"libbrindlewake_network.so", "brindlewakeMakeTcpStream", Grade::Stops,
         "there is no connection in clear", errors::NetworkUnreachable, boxOfFailedLogIn},
        {"libbrindlewake_tls.so", "brindlewakeMakeTlsStream", Grade::Stops, "nothing can be encrypted",
         errors::EncryptionFailed, boxOfFailedLogIn},
        {"libbrindlewake_sasl.so", "brindlewakeMakeMechanism", Grade::Met,
         "every log-on shows the password, and SMTP has none", errors::SendingLogOnImpossible,
         email::boxOfFailedSending},
        {"libbrindlewake_printing.so", "brindlewakeMakeDefaultPrinter", Grade::Met, "nothing can be printed",
         errors::PrinterError, controls::textOfError},
        {"libbrindlewake_standard.so", "brindlewakeStandardReader", Grade::Met,
         "nothing can be read with --mail=standard", errors::FileNotFound, email::boxOfFailedOpening},
        {"libbrindlewake_directory.so", "brindlewakeMakeConversation", Grade::Met,
         "Find Address asks no directory", errors::FileNotFound, lineOfFindAddress},
    }};
    for (const OwnLibrary& library : libraries) {
        if (platform::symbolIn(library.file, library.function) == nullptr) {
            findings.push_back(about("libraries", library.grade,
                                     QStringLiteral("%1 cannot be loaded: %2.")
                                         .arg(QLatin1String(library.file), QLatin1String(library.without)),
                                     QStringLiteral("Install all files of the program and what they need.")));
            findings.back().number = library.number;
            findings.back().box = library.box(library.number);
        }
    }
    findings.push_back(about("libraries", Grade::Info,
                             QStringLiteral("Qt %1, %2.")
                                 .arg(QLatin1String(qVersion()), transport::tlsLibraryVersion().isEmpty()
                                                                     ? QStringLiteral("no TLS")
                                                                     : transport::tlsLibraryVersion())));
}
} // namespace

std::vector<Finding> findingsOfSurroundings(const email::Settings& settings) {
    std::vector<Finding> findings;
    addLogo(findings);
    addSound(settings, findings);
    addPrinter(settings, findings);
    addFonts(findings);
    addLibraries(findings);
    return findings;
}

} // namespace doctor
