#include "demo/encryption.h"
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
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

struct Options {
    std::vector<std::string> mail;
    std::uint16_t popPort = 0;
    std::uint16_t smtpPort = 0;
    bool untilStdinCloses = false;
    /** The ports that speak TLS from the first byte on. */
    std::uint16_t popsPort = 0;
    std::uint16_t smtpsPort = 0;
    /** Where the root of the server's certificate is written to; empty means nowhere. */
    std::string rootCertificate;
    bool encrypts = false;
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
    const QCommandLineOption mail(QStringLiteral("mail"),
                                  QStringLiteral("Folder of the *.eml files; may be given more than once."),
                                  QStringLiteral("folder"));
    const QCommandLineOption popPort(QStringLiteral("pop-port"), QStringLiteral("POP3 port, 0 for any."),
                                     QStringLiteral("port"), QStringLiteral("0"));
    const QCommandLineOption smtpPort(QStringLiteral("smtp-port"), QStringLiteral("SMTP port, 0 for any."),
                                      QStringLiteral("port"), QStringLiteral("0"));
    const QCommandLineOption untilStdinCloses(QStringLiteral("until-stdin-closes"),
                                              QStringLiteral("End when the standard input ends."));
    const QCommandLineOption popsPort(QStringLiteral("pops-port"),
                                      QStringLiteral("POP3 port with TLS from the first byte, 0 for any."),
                                      QStringLiteral("port"), QStringLiteral("0"));
    const QCommandLineOption smtpsPort(QStringLiteral("smtps-port"),
                                       QStringLiteral("SMTP port with TLS from the first byte, 0 for any."),
                                       QStringLiteral("port"), QStringLiteral("0"));
    const QCommandLineOption rootCertificate(
        QStringLiteral("root-certificate"),
        QStringLiteral("Writes the root of the server's certificate, which is for localhost and 127.0.0.1."),
        QStringLiteral("file"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "A POP3 and SMTP server on 127.0.0.1 with a sample mailbox. "
        "Any user name is good; the password is \"demo\". With any of the last three options it "
        "encrypts: it offers STLS and STARTTLS, and opens both ports with TLS."));
    parser.addHelpOption();
    parser.addOptions({mail, popPort, smtpPort, untilStdinCloses, popsPort, smtpsPort, rootCertificate});
    parser.process(application);
    if (!parser.isSet(mail)) {
        throw std::runtime_error("--mail <folder> is needed");
    }
    std::vector<std::string> folders;
    for (const QString& folder : parser.values(mail)) {
        folders.push_back(folder.toStdString());
    }
    return {std::move(folders),
            portOf(parser.value(popPort)),
            portOf(parser.value(smtpPort)),
            parser.isSet(untilStdinCloses),
            portOf(parser.value(popsPort)),
            portOf(parser.value(smtpsPort)),
            parser.value(rootCertificate).toStdString(),
            parser.isSet(popsPort) || parser.isSet(smtpsPort) || parser.isSet(rootCertificate)};
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

demo::Listener::MakeConversation popServer(mailserver::Mailbox& mailbox, bool encrypts) {
    mailserver::Pop3Features features;
    if (encrypts) {
        features.stls = true;
        features.mechanisms = demo::mechanisms();
        features.utf8 = true;
    }
    return [&mailbox, features] {
        return std::make_unique<mailserver::Pop3Conversation>(
            mailbox, mailserver::anyUserWith(mailserver::kDemoPassword), features);
    };
}

demo::Listener::MakeConversation smtpServer(mailserver::Mailbox& mailbox, bool encrypts) {
    mailserver::SmtpFeatures features;
    if (encrypts) {
        features.startTls = true;
        features.mechanisms = demo::mechanisms();
    }
    return [&mailbox, features] {
        return std::make_unique<mailserver::SmtpConversation>(mailserver::deliveryInto(mailbox, features));
    };
}

int serve(QCoreApplication& application) {
    const Options options = optionsOf(application);
    mailserver::Mailbox mailbox;
    for (const std::string& folder : options.mail) {
        mailbox.load(folder);
    }

    std::optional<demo::Tls> later;
    std::optional<demo::Tls> fromTheStart;
    if (options.encrypts) {
        later = {demo::newIdentity(options.rootCertificate), false};
        fromTheStart = {later->configuration, true};
    }
    demo::Listener pop(popServer(mailbox, options.encrypts), later);
    demo::Listener smtp(smtpServer(mailbox, options.encrypts), later);
    demo::Listener pops(popServer(mailbox, options.encrypts), fromTheStart);
    demo::Listener smtps(smtpServer(mailbox, options.encrypts), fromTheStart);
    start(pop, options.popPort);
    start(smtp, options.smtpPort);
    std::ostringstream ports;
    ports << "POP3 " << pop.port() << " SMTP " << smtp.port();
    if (options.encrypts) {
        start(pops, options.popsPort);
        start(smtps, options.smtpsPort);
        ports << " POP3S " << pops.port() << " SMTPS " << smtps.port();
    }

    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    input.setEnabled(options.untilStdinCloses);
    quitWhenInputEnds(input);

    std::cout << ports.str() << std::endl;
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
