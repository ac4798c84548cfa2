#include "tests/support/transcript.h"

#include "tests/support/places.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace support {

namespace {
std::filesystem::path pathOf(const std::string& folder) {
    return std::filesystem::path(dataFolder()) / folder;
}

/** The bytes that \r, \n, \t, \\ and \xHH stand for, and all others. */
std::string unescaped(std::string_view text) {
    std::string bytes;
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (text[index] != '\\') {
            bytes += text[index];
            continue;
        }
        switch (text.at(++index)) {
        case 'r':
            bytes += '\r';
            break;
        case 'n':
            bytes += '\n';
            break;
        case 't':
            bytes += '\t';
            break;
        case 'x':
            bytes += static_cast<char>(std::stoi(std::string(text.substr(index + 1, 2)), nullptr, 16));
            index += 2;
            break;
        case '\\':
            bytes += '\\';
            break;
        default:
            throw std::invalid_argument("unknown escape in: " + std::string(text));
        }
    }
    return bytes;
}

void addLine(Transcript& transcript, const std::string& mark, const std::string& text) {
    using Speaker = Transcript::Speaker;
    if (mark == "S:") {
        transcript.turns.push_back({Speaker::Server, unescaped(text) + "\r\n"});
    } else if (mark == "S-") {
        transcript.turns.push_back({Speaker::Server, unescaped(text)});
    } else if (mark == "C:") {
        transcript.turns.push_back({Speaker::Client, unescaped(text)});
    } else if (mark == "E:") {
        transcript.events.push_back(text);
    } else if (mark == "M:" && text == "8bit") {
        transcript.eightBit = true;
    } else if (mark == "M:" && text == "at once") {
        transcript.atOnce = true;
    } else if (mark == "X:") {
        transcript.error = std::stoi(text);
    } else {
        throw std::invalid_argument("unknown mark in a dialogue: " + mark);
    }
}
} // namespace

std::vector<std::string> Transcript::clientLines() const {
    std::vector<std::string> lines;
    for (const Turn& turn : turns) {
        if (turn.speaker == Speaker::Client) {
            lines.push_back(turn.text);
        }
    }
    return lines;
}

std::string Transcript::serverBytes() const {
    std::string bytes;
    for (const Turn& turn : turns) {
        if (turn.speaker == Speaker::Server) {
            bytes += turn.text;
        }
    }
    return bytes;
}

std::vector<std::string> transcriptNames(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(pathOf(folder))) {
        if (entry.path().extension() == ".txt") {
            names.push_back(entry.path().stem().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

Transcript readTranscript(const std::string& folder, const std::string& name) {
    std::ifstream file(pathOf(folder) / (name + ".txt"));
    if (!file) {
        throw std::runtime_error("no such dialogue: " + name);
    }
    Transcript transcript;
    for (std::string line; std::getline(file, line);) {
        if (!line.empty() && line.front() != '#') {
            addLine(transcript, line.substr(0, 2), line.size() > 3 ? line.substr(3) : std::string());
        }
    }
    return transcript;
}

std::string testNameOf(const std::string& transcriptName) {
    std::string name = transcriptName;
    for (char& character : name) {
        character = std::isalnum(static_cast<unsigned char>(character)) != 0 ? character : '_';
    }
    return name;
}

std::string testNameOf(const std::string& transcriptName, std::size_t pieceBytes) {
    const bool whole = pieceBytes == 0 || pieceBytes == std::string::npos;
    return testNameOf(transcriptName) + (whole ? "_Whole" : "_PiecesOf" + std::to_string(pieceBytes));
}

void play(const Transcript& transcript, Peer& peer, std::size_t pieceBytes) {
    const std::size_t piece = transcript.atOnce ? 0 : pieceBytes;
    std::string bytes;
    bool inMessage = false;
    const auto say = [&] {
        if (!bytes.empty()) {
            peer.send(std::exchange(bytes, {}), piece);
        }
    };
    for (const Transcript::Turn& turn : transcript.turns) {
        if (turn.speaker == Transcript::Speaker::Server) {
            bytes += turn.text;
            continue;
        }
        say();
        if (!inMessage) {
            turn.text == "CAPA" ? peer.readLine() : peer.readCommandOfOld();
        } else if (turn.text == ".") {
            while (peer.readLine() != ".") {
            }
        }
        inMessage = (inMessage || turn.text == "DATA") && turn.text != ".";
    }
    say();
}

} // namespace support
