#pragma once

#include "message/mail_mode.h"

#include <QString>
#include <QStringList>

#include <variant>

/** What the program is asked to do. */
enum class Task { ShowWindows, TellUsage, TellVersion, Examine, TestItself };

/** The options that the program was started with. */
struct CommandLine {
    Task task = Task::ShowWindows;
    /** The folder to change into before anything else; empty for the current one. */
    QString settingsFolder;
    MailMode mail = MailMode::House;
    /** With Task::Examine: who logs on, as typed into the login window; empty for nobody. */
    QString user;
    /** The password is the first line of the standard input, and is not asked for. */
    bool passwordFromInput = false;
    bool json = false;

    bool operator==(const CommandLine&) const = default;
};

/** Options that do not go together, or that there are none of. */
struct WrongUse {
    QString reason;
};

/**
 * Reads the arguments, the program's name first. Options of Qt's own (`-platform`, `-style` and so on) are
 * passed over, since the application object takes them. A password can be asked for only where the standard
 * input is a terminal.
 */
std::variant<CommandLine, WrongUse> readCommandLine(const QStringList& arguments, bool inputIsTerminal);

/** What --help tells. */
QString usageText();
