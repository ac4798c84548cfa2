#include "tests/support/dialogue.h"

#include "tests/support/places.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace support {

namespace {
std::filesystem::path pathOf(const std::string& folder) {
    return std::filesystem::path(dataFolder()) / folder;
}
} // namespace

std::vector<std::string> dialogueNames(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(pathOf(folder))) {
        if (entry.path().extension() == ".txt") {
            names.push_back(entry.path().stem().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<DialogueLine> readDialogue(const std::string& folder, const std::string& name) {
    std::ifstream file(pathOf(folder) / (name + ".txt"));
    if (!file) {
        throw std::runtime_error("no such dialogue: " + name);
    }
    std::vector<DialogueLine> lines;
    for (std::string line; std::getline(file, line);) {
        if (!line.empty() && line.front() != '#') {
            lines.push_back({line.substr(0, 2), line.size() > 3 ? line.substr(3) : std::string()});
        }
    }
    return lines;
}

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

std::string escaped(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        if (byte == '\\') {
            text += "\\\\";
        } else if (code < 0x20 || code > 0x7e) {
            text.append("\\x") += digits[code >> 4U];
            text += digits[code & 0xFU];
        } else {
            text += byte;
        }
    }
    return text;
}

} // namespace support
