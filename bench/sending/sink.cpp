// An SMTP server that takes a message as fast as it comes and forgets it:
//
//     bench_smtp_sink <message>
//
// Writes its port, and after each session a line with the bytes of the message and whether its body was that
// of the given one. The comparison comes after QUIT, so that no client waits for it. Ends with its
// standard input.

#include "bench/delayed_listener.h"
#include "mailserver/smtp_conversation.h"

#include <chrono>
#include <cstdint>
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace {

std::string_view bodyOf(std::string_view message) {
    const std::size_t blankLine = message.find("\r\n\r\n");
    return blankLine == std::string_view::npos ? std::string_view() : message.substr(blankLine + 4);
}

std::string contentOf(const char* path) {
    std::ifstream file(path, std::ios::binary);
    std::string content{std::istreambuf_iterator<char>(file), {}};
    if (bodyOf(content).empty()) {
        throw std::runtime_error("there is no message to compare with");
    }
    return content;
}

void run(const char* messagePath) {
    const std::string wanted = contentOf(messagePath);
    std::string lines;
    const mailserver::SmtpService service{"sink", [&lines](mailserver::IncomingMessage message) {
                                              lines = std::move(message.lines);
                                              return true;
                                          }};
    const auto compare = [&](std::uint64_t /*roundTrips*/) {
        const std::string received = std::exchange(lines, {});
        const bool same = bodyOf(mailserver::withoutDoubledDots(received)) == bodyOf(wanted);
        std::cout << "bytes " << received.size() << " body " << (same ? "same" : "different") << std::endl;
    };
    bench::DelayedListener listener(
        [&service] { return std::make_unique<mailserver::SmtpConversation>(service); },
        std::chrono::milliseconds(0), compare);
    std::cout << listener.port() << std::endl;
    listener.serve();
}
} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::cerr << "usage: bench_smtp_sink <message>\n";
        return 2;
    }
    try {
        run(arguments[1]);
    } catch (const std::exception& error) {
        std::cerr << "bench_smtp_sink: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
