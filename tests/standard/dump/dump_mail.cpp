// Writes what the standard reader makes of messages:
//
//     dump_mail <folder>
//
// For each file of the folder, in the order of their names, a line for each of: the sender, the subject, the
// date, the text, and each attachment's name and decoded bytes, all in hexadecimal; then a full stop.

#include "tests/standard/read_mail.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace {
void write(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string line;
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        line += {digits[code >> 4U], digits[code & 0xFU]};
    }
    std::cout << line << '\n';
}

void dump(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    const support::ReadMail mail = support::readMail(bytes);
    for (const std::string* text : {&mail.message.fields.from, &mail.message.fields.subject,
                                    &mail.message.fields.date, &mail.message.text}) {
        write(*text);
    }
    for (std::size_t index = 0; index < mail.message.attachments.size(); ++index) {
        write(mail.message.attachments[index].name);
        write(mail.bytesOf(index));
    }
    std::cout << ".\n";
}
} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::cerr << "usage: dump_mail <folder>\n";
        return 2;
    }
    try {
        std::vector<std::filesystem::path> paths;
        for (const auto& entry : std::filesystem::directory_iterator(arguments[1])) {
            paths.push_back(entry.path());
        }
        std::sort(paths.begin(), paths.end());
        std::for_each(paths.begin(), paths.end(), dump);
    } catch (const std::exception& error) {
        std::cerr << "dump_mail: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
