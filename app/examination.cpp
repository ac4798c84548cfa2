#include "app/examination.h"

#include "doctor/doctor.h"
#include "platform/text.h"
#include "platform/typed_password.h"

#include <QGuiApplication>
#include <QLoggingCategory>

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <unistd.h>

namespace {
constexpr int kWrongUse = 2;

/** One line at the terminal that tells what is being done, and is written over by the next one. */
class ProgressLine {
  public:
    void show(const QString& what) {
        write(what);
        shown_ = true;
    }

    void clear() {
        if (shown_) {
            write({});
            write({}, '\r');
        }
    }

  private:
    static void write(const QString& what, char end = '\0') {
        constexpr int width = 78;
        const QString line = u'\r' + platform::fitted(platform::withControlsVisible(what), width);
        static_cast<void>(std::fputs(line.toUtf8().constData(), stderr));
        if (end != '\0') {
            static_cast<void>(std::fputc(end, stderr));
        }
        static_cast<void>(std::fflush(stderr));
    }

    bool shown_ = false;
};

/** Gives a variable of the environment another value, or none, and in the end the old one back. */
class VariableMeanwhile {
  public:
    VariableMeanwhile(const char* name, const char* value)
        : name_(name), wasSet_(qEnvironmentVariableIsSet(name)), before_(qgetenv(name)) {
        set(value != nullptr, value);
    }

    ~VariableMeanwhile() { set(wasSet_, before_); }

    VariableMeanwhile(const VariableMeanwhile&) = delete;
    VariableMeanwhile& operator=(const VariableMeanwhile&) = delete;

  private:
    void set(bool isSet, const QByteArray& value) const {
        if (isSet) {
            qputenv(name_, value);
        } else {
            qunsetenv(name_);
        }
    }

    const char* name_;
    bool wasSet_;
    QByteArray before_;
};

/**
 * Fonts, pictures and the printer need an application object of windows, but no display: this platform comes
 * with Qt's library of windows itself.
 */
std::unique_ptr<QGuiApplication> applicationWithoutDisplay(char** arguments) {
    static int nameAlone = 1;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // Qt looks for a display in the folder of the first variable. When that is missing, it makes it, or one
    // below the second; nobody can make any in this one, of which Qt warns.
    const VariableMeanwhile noRuntime("XDG_RUNTIME_DIR", nullptr);
    const VariableMeanwhile noTemporary("TMPDIR", "/proc/self/fdinfo");
    QLoggingCategory::setFilterRules(QStringLiteral("default.warning=false\ndefault.critical=false"));
    auto application = std::make_unique<QGuiApplication>(nameAlone, arguments);
    QLoggingCategory::setFilterRules({});
    return application;
}

std::optional<std::string> passwordFor(const CommandLine& line) {
    if (line.passwordFromInput) {
        return platform::readSecretLine(STDIN_FILENO);
    }
    const std::string name = platform::toBytes(platform::withControlsVisible(line.user));
    return platform::askForPassword(STDIN_FILENO, "Password of " + name + ": ");
}
} // namespace

int examine(const CommandLine& line, char** arguments) {
    doctor::Order order;
    order.mode = line.mail;
    order.user = line.user;
    if (!line.user.isEmpty()) {
        const auto password = passwordFor(line);
        if (!password) {
            static_cast<void>(std::fputs("brindlewake: no password has come.\n", stderr));
            return kWrongUse;
        }
        order.password = platform::fromBytes(*password);
    }
    const auto application = applicationWithoutDisplay(arguments);
    ProgressLine progress;
    if (::isatty(STDERR_FILENO) == 1) {
        order.progress = [&progress](const QString& what) { progress.show(what); };
    }
    const doctor::Report report = doctor::examine(order);
    progress.clear();
    const QByteArray told = line.json ? doctor::asJson(report) : doctor::asText(report).toUtf8();
    static_cast<void>(std::fwrite(told.constData(), 1, static_cast<std::size_t>(told.size()), stdout));
    return report.status();
}
