// A real Dovecot and a real Exim over one mailbox, for the walk through the whole round:
//
//     round_servers <message to deliver>...
//
// Writes the two servers' names, then answers each line of its standard input with one line: "await N" waits
// until N messages have been sent and says how many have arrived, "subjects" lists the subjects of all
// messages in the mailbox. Ends with its standard input. Exits with 77, and says why, when there are no such
// servers on this computer.

#include "tests/support/dovecot_server.h"
#include "tests/support/exim_server.h"

#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>

namespace {
constexpr int kSkipped = 77;

std::string fileContent(const char* path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error(std::string("cannot read ") + path);
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

int run(int argumentCount, char** arguments) {
    for (const std::string& reason :
         {support::DovecotServer::whyUnavailable(), support::EximServer::whyUnavailable()}) {
        if (!reason.empty()) {
            std::cerr << reason << '\n';
            return kSkipped;
        }
    }
    support::DovecotServer dovecot;
    for (int index = 1; index < argumentCount; ++index) {
        dovecot.deliver(fileContent(arguments[index]));
    }
    const support::EximServer exim(dovecot.maildir());
    std::cout << dovecot.address().toStdString() << ' ' << exim.address().toStdString() << std::endl;
    for (std::string line; std::getline(std::cin, line);) {
        answer(dovecot, exim, line);
    }
    return 0;
}
} // namespace

int main(int argumentCount, char** arguments) {
    try {
        return run(argumentCount, arguments);
    } catch (const std::exception& error) {
        std::cerr << "round_servers: " << error.what() << '\n';
        return 1;
    }
}
