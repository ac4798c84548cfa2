#include "demo/listener.h"
#include "mailserver/mailbox.h"
#include "mailserver/pop3_conversation.h"
#include "mailserver/smtp_conversation.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QSocketNotifier>

#include <array>
#include <exception>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace {

struct Options {
    std::string mail;
    std::uint16_t popPort = 0;
    std::uint16_t smtpPort = 0;
    bool untilStdinCloses = false;
};

std::uint16_t portOf(const QString& text) {
    bool isNumber = false;
    const std::uint16_t port = text.toUShort(&isNumber);
    if (!isNumber) {
        throw std::runtime_error("not a port: " + text.toStdString());
    }
    return port;
}

Options optionsOf(const QCoreApplication& application) {
    const QCommandLineOption mail(QStringLiteral("mail"), QStringLiteral("Folder of the *.eml files."),
                                  QStringLiteral("folder"));
    const QCommandLineOption popPort(QStringLiteral("pop-port"), QStringLiteral("POP3 port, 0 for any."),
                                     QStringLiteral("port"), QStringLiteral("0"));
    const QCommandLineOption smtpPort(QStringLiteral("smtp-port"), QStringLiteral("SMTP port, 0 for any."),
                                      QStringLiteral("port"), QStringLiteral("0"));
    const QCommandLineOption untilStdinCloses(QStringLiteral("until-stdin-closes"),
                                              QStringLiteral("End when the standard input ends."));
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("A POP3 and SMTP server on 127.0.0.1 with a sample mailbox. "
                       "Any user name is good; the password is \"demo\"."));
    parser.addHelpOption();
    parser.addOptions({mail, popPort, smtpPort, untilStdinCloses});
    parser.process(application);
    if (!parser.isSet(mail)) {
        throw std::runtime_error("--mail <folder> is needed");
    }
    return {parser.value(mail).toStdString(), portOf(parser.value(popPort)), portOf(parser.value(smtpPort)),
            parser.isSet(untilStdinCloses)};
}

void start(demo::Listener& listener, std::uint16_t port) {
    if (!listener.start(port)) {
        throw std::runtime_error("port " + std::to_string(port) + ": " + listener.errorText().toStdString());
    }
}

void quitWhenInputEnds(QSocketNotifier& input) {
    QObject::connect(&input, &QSocketNotifier::activated, &input, [&input] {
        std::array<char, 256> ignored{};
        if (read(STDIN_FILENO, ignored.data(), ignored.size()) > 0) {
            return;
        }
        input.setEnabled(false);
        QCoreApplication::quit();
    });
}

int serve(QCoreApplication& application) {
    const Options options = optionsOf(application);
    mailserver::Mailbox mailbox;
    mailbox.load(options.mail);

    demo::Listener pop([&] { return std::make_unique<mailserver::Pop3Conversation>(mailbox); });
    demo::Listener smtp([&] { return std::make_unique<mailserver::SmtpConversation>(mailbox); });
    start(pop, options.popPort);
    start(smtp, options.smtpPort);

    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    input.setEnabled(options.untilStdinCloses);
    quitWhenInputEnds(input);

    std::cout << "POP3 " << pop.port() << " SMTP " << smtp.port() << std::endl;
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication application(argc, argv);
    try {
        return serve(application);
    } catch (const std::exception& error) {
        std::cerr << "brindlewake_demo_server: " << error.what() << '\n';
        return 1;
    }
}
