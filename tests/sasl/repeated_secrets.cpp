#include "tests/sasl/repeated_secrets.h"

#include "components/sasl/base64.h"
#include "tests/sasl/scram_server.h"

#include <algorithm>
#include <optional>

namespace support {

namespace {
std::string decoded(const std::string& line) {
    return sasl::fromBase64(line).value_or("");
}

/** Speaks SCRAM, with its challenges behind the mark, and returns what the client has said. */
std::string playScram(Peer& peer, ScramServer scram, const std::string& first, const std::string& mark) {
    peer.send(mark + sasl::toBase64(scram.firstMessage(decoded(first))) + "\r\n");
    const std::string proof = peer.readLine();
    peer.send(mark + sasl::toBase64(scram.finalMessage(decoded(proof))) + "\r\n");
    return first + ' ' + proof + ' ' + peer.readLine();
}
} // namespace

std::vector<std::string> formsOf(const std::string& password) {
    std::vector<std::string> forms{password};
    for (std::size_t before = 0; before < 3; ++before) {
        std::string form = sasl::toBase64(std::string(before, 'x') + password + "xx");
        // The letters beside those of the password alone: up to four at the end, and up to three before.
        form.resize((before + password.size()) * 4 / 3);
        form.erase(0, before == 0 ? 0 : before + 1);
        forms.push_back(form);
    }
    return forms;
}

std::vector<std::string> linesThatTell(const std::vector<std::string>& lines, const std::string& password) {
    const std::vector<std::string> forms = formsOf(password);
    std::vector<std::string> telling;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(telling), [&forms](const std::string& line) {
        return std::any_of(forms.begin(), forms.end(),
                           [&line](const std::string& form) { return line.find(form) != std::string::npos; });
    });
    return telling;
}

std::string playMechanism(Peer& peer, const std::string& command, const std::string& mark,
                          const std::string& password) {
    const std::size_t name = command.find(' ') + 1;
    const std::size_t space = std::min(command.find(' ', name), command.size());
    const std::string mechanism = command.substr(name, space - name);
    const std::string first = command.substr(std::min(space + 1, command.size()));
    if (mechanism == "SCRAM-SHA-256") {
        return playScram(peer, ScramServer(QCryptographicHash::Sha256, password, {}), first, mark);
    }
    if (mechanism == "SCRAM-SHA-1") {
        return playScram(peer, ScramServer(QCryptographicHash::Sha1, password, {}), first, mark);
    }
    if (mechanism == "PLAIN") {
        return first;
    }
    // What a server asks in words may repeat what it should not know.
    peer.send(mark + sasl::toBase64("<1.2@" + password + ">") + "\r\n");
    std::string said = peer.readLine();
    if (mechanism == "LOGIN") {
        peer.send(mark + sasl::toBase64("and now not " + password + "?") + "\r\n");
        said += ' ' + peer.readLine();
    }
    return said;
}

} // namespace support
