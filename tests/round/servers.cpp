// A real Dovecot and a real Exim over one mailbox, for the walk through the whole round:
//
//     round_servers [--encrypted <file for the root>] <message to deliver>...
//
// Writes the two servers' names, then answers each line of its standard input with one line: "await N" waits
// until N messages have been sent and says how many have arrived, "subjects" lists the subjects of all
// messages in the mailbox. With --encrypted both servers speak TLS, the first from the first byte on, the
// second after STARTTLS and with mail only from those who have logged on. Ends with its standard input. Exits
// with 77, and says why, when there are no such servers on this computer.

#include "tests/support/dovecot_server.h"
#include "tests/support/exim_server.h"
#include "tests/support/trusted_root.h"

#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace {
constexpr int kSkipped = 77;

std::string fileContent(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read " + path);
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

/** Dovecot's own files may end their lines in LF alone. */
std::string subjectOf(const std::string& message) {
    constexpr std::string_view name = "\nSubject: ";
    const std::size_t start = message.find(name);
    if (start == std::string::npos) {
        return "(none)";
    }
    const std::size_t value = start + name.size();
    return message.substr(value, message.find_first_of("\r\n", value) - value);
}

void answer(const support::DovecotServer& dovecot, const support::EximServer& exim, const std::string& line) {
    std::istringstream words(line);
    std::string command;
    std::size_t count = 0;
    words >> command >> count;
    if (command == "await") {
        std::cout << exim.awaitMessages(count) << std::endl;
    } else if (command == "subjects") {
        for (const std::string& message : dovecot.messages()) {
            std::cout << '[' << subjectOf(message) << ']';
        }
        std::cout << std::endl;
    } else {
        throw std::runtime_error("unknown command: " + line);
    }
}

struct Arguments {
    /** Where the root of the servers' certificates is to be written; nothing for servers in clear. */
    std::optional<std::string> rootFile;
    std::vector<std::string> messages;
};

Arguments readArguments(std::vector<std::string> words) {
    Arguments arguments;
    if (words.size() >= 2 && words[0] == "--encrypted") {
        arguments.rootFile = words[1];
        words.erase(words.begin(), words.begin() + 2);
    }
    arguments.messages = std::move(words);
    return arguments;
}

void writeRoot(const std::string& path) {
    std::ofstream file(path, std::ios::binary);
    if (!(file << support::testRoot().certificatePem() << std::flush)) {
        throw std::runtime_error("cannot write " + path);
    }
}

/** How Exim is set up; the certificate is that of both servers. */
support::EximOptions eximOptions(const std::optional<mailserver::Certificate>& certificate) {
    if (!certificate) {
        return {};
    }
    return {.certificate = certificate,
            .account = support::EximAccount(),
            .logOnNeedsTls = true,
            .answerToStrangers = "530 5.7.0 Authentication required"};
}

int run(const Arguments& arguments) {
    for (const std::string& reason :
         {support::DovecotServer::whyUnavailable(), support::EximServer::whyUnavailable()}) {
        if (!reason.empty()) {
            std::cerr << reason << '\n';
            return kSkipped;
        }
    }
    std::optional<mailserver::Certificate> certificate;
    if (arguments.rootFile) {
        writeRoot(*arguments.rootFile);
        certificate = support::trustedCertificate();
    }
    support::DovecotServer dovecot(support::DovecotServer::Options{.certificate = certificate});
    for (const std::string& message : arguments.messages) {
        dovecot.deliver(fileContent(message));
    }
    const support::EximServer exim(dovecot.maildir(), eximOptions(certificate));
    const QString popServer =
        certificate ? QStringLiteral("tls://") + dovecot.tlsAddress() : dovecot.address();
    const QString smtpServer = certificate ? QStringLiteral("starttls://") + exim.address() : exim.address();
    std::cout << popServer.toStdString() << ' ' << smtpServer.toStdString() << std::endl;
    for (std::string line; std::getline(std::cin, line);) {
        answer(dovecot, exim, line);
    }
    return 0;
}
} // namespace

int main(int argumentCount, char** arguments) {
    try {
        return run(readArguments({arguments + 1, arguments + argumentCount}));
    } catch (const std::exception& error) {
        std::cerr << "round_servers: " << error.what() << '\n';
        return 1;
    }
}
