// Parses the messages of a folder with the program's parser and with GMime's, as told by its standard input:
//
//     bench_reading_parsers <folder>
//     time <reader> <passes>      answers the seconds of processor time that a pass over all messages took
//     show <reader> <file>        writes what was read: each text, and each attachment's name, and a zero
//     byte
//
// Readers are "Brindlewake", "Standard" (the program's in its standard way), "GMime" and "GMimeWithBytes".
// Loading the messages and giving results back is not timed.

#include "bench/reading/readers.h"

#include <algorithm>
#include <ctime>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace {
using bench::Reader;
using bench::ReadMessage;

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/** For each kind of reader, one for each message. */
std::map<std::string, std::vector<Reader>> readersOf(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    std::map<std::string, std::vector<Reader>> readers;
    for (const auto& path : paths) {
        const std::string message = contentOf(path);
        readers["Brindlewake"].push_back(bench::ownReader(message));
        readers["GMime"].push_back(bench::gmimeReader(message));
        readers["GMimeWithBytes"].push_back(bench::gmimeReader(message, bench::Told::NameAndBytes));
        readers["Standard"].push_back(bench::standardReader(message));
    }
    return readers;
}

double processorSeconds() {
    std::timespec time{};
    if (clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time) != 0) {
        throw std::runtime_error("no processor time");
    }
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double secondsOfPass(const std::vector<Reader>& readers, int passes) {
    std::vector<ReadMessage> results(readers.size());
    const double start = processorSeconds();
    for (int pass = 0; pass < passes; ++pass) {
        std::transform(readers.begin(), readers.end(), results.begin(),
                       [](const Reader& reader) { return reader(); });
    }
    return (processorSeconds() - start) / passes;
}

void show(const std::vector<Reader>& readers, const std::string& path) {
    std::ofstream file(path, std::ios::binary);
    for (const Reader& reader : readers) {
        const ReadMessage message = reader();
        file << message.text << '\0';
        for (const std::string& name : message.attachments) {
            file << name << '\n';
        }
        file << '\0';
    }
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + path);
    }
}

void serve(const std::filesystem::path& folder) {
    const auto readers = readersOf(folder);
    std::string command;
    std::string name;
    while (std::cin >> command >> name) {
        if (command == "time") {
            int passes = 0;
            std::cin >> passes;
            std::cout << secondsOfPass(readers.at(name), passes) << std::endl;
        } else {
            std::string path;
            std::cin >> path;
            show(readers.at(name), path);
            std::cout << "shown" << std::endl;
        }
    }
}
} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::cerr << "usage: bench_reading_parsers <folder of messages>\n";
        return 2;
    }
    try {
        serve(arguments[1]);
    } catch (const std::exception& error) {
        std::cerr << "bench_reading_parsers: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
