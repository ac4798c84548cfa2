#include "bench/startup/process.h"
#include "bench/startup/window_watcher.h"

#include <chrono>
#include <exception>
#include <iostream>
#include <string>

namespace {
/** Starts a program and prints when its window was drawn, and what the program takes once it is at rest. */
void watch(const std::string& title, int minimumWidth, char* const* command) {
    bench::WindowWatcher watcher;
    const bench::Process process(command);
    const bench::DrawnWindow drawn = watcher.waitUntilDrawn(title, minimumWidth);
    const std::chrono::duration<double, std::milli> elapsed = drawn.when - process.started();
    process.waitUntilIdle();
    const long privateKibibytes = process.kibibytes("smaps_rollup", "Private_Clean") +
                                  process.kibibytes("smaps_rollup", "Private_Dirty");
    std::cout << "milliseconds " << elapsed.count() << " private-kib " << privateKibibytes
              << " anonymous-kib " << process.kibibytes("status", "RssAnon") << " width " << drawn.width
              << " height " << drawn.height << " others-with-qt " << process.othersThatMap("libQt6Core")
              << std::endl;
}
} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount < 4) {
        std::cerr << "usage: bench_startup_watch <window title> <least width> <program> [<argument>...]\n";
        return 2;
    }
    try {
        watch(arguments[1], std::stoi(arguments[2]), arguments + 3);
    } catch (const std::exception& error) {
        std::cerr << "bench_startup_watch: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
