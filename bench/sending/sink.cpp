// An SMTP server that takes a message as fast as it comes and forgets it:
//
//     bench_smtp_sink <message>
//
// Writes its port, and after each session a line with the bytes of the message and whether its body was that
// of the given one. The comparison comes after QUIT, so that no client waits for it. Ends with its
// standard input.

#include "platform/private_file.h"

#include <array>
#include <cerrno>
#include <fstream>
#include <iostream>
#include <iterator>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace {
using platform::FileDescriptor;

constexpr std::size_t kReadBytes = 256U << 10U;
constexpr std::string_view kFinalDot = "\r\n.\r\n";

int mustSucceed(int result, const char* what) {
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), what);
    }
    return result;
}

std::string_view bodyOf(std::string_view message) {
    const std::size_t blankLine = message.find("\r\n\r\n");
    return blankLine == std::string_view::npos ? std::string_view() : message.substr(blankLine + 4);
}

/** The message that came up to the final dot, with the doubled dots made single. */
std::string withoutDots(std::string_view received) {
    std::string message;
    message.reserve(received.size());
    received.remove_suffix(kFinalDot.size() - 2);
    for (std::size_t dot = 0; (dot = received.find("\r\n.")) != std::string_view::npos;) {
        message.append(received.substr(0, dot + 2));
        received.remove_prefix(dot + 3);
    }
    return message.append(received);
}

/** One session, from the greeting to QUIT. */
class Session {
  public:
    explicit Session(int socket) : connection_(socket) { received_.reserve(64U << 20U); }

    /** Returns the message as it came, with the final dot. */
    std::string serve() {
        answer("220 sink\r\n");
        std::array<char, kReadBytes> bytes;
        while (!over_) {
            const ssize_t count = recv(connection_.number(), bytes.data(), bytes.size(), 0);
            if (count <= 0) {
                throw std::runtime_error("the client is gone before its farewell");
            }
            const std::string_view piece(bytes.data(), static_cast<std::size_t>(count));
            if (receiving_) {
                received_.append(piece);
                endMessage();
            } else {
                commands_.append(piece);
                answerCommands();
            }
        }
        return std::move(received_);
    }

  private:
    void endMessage() {
        // The end is looked for at the end only; a message that goes on behind it fails the comparison.
        if (received_.ends_with(kFinalDot)) {
            receiving_ = false;
            answer("250 taken\r\n");
        }
    }

    void answerCommands() {
        std::string answers;
        for (std::size_t end = 0; !receiving_ && (end = commands_.find("\r\n")) != std::string::npos;) {
            answers += answerTo(std::string_view(commands_).substr(0, end));
            commands_.erase(0, end + 2);
        }
        answer(answers);
    }

    std::string_view answerTo(std::string_view command) {
        const std::string_view keyword = command.substr(0, 4);
        if (keyword == "EHLO" || keyword == "ehlo") {
            return "250-sink\r\n250-8BITMIME\r\n250-PIPELINING\r\n250 SIZE 100000000\r\n";
        }
        if (keyword == "DATA" || keyword == "data") {
            receiving_ = true;
            return "354 go on\r\n";
        }
        if (keyword == "QUIT" || keyword == "quit") {
            over_ = true;
            return "221 bye\r\n";
        }
        return "250 ok\r\n";
    }

    void answer(std::string_view text) const {
        while (!text.empty()) {
            const ssize_t sent = send(connection_.number(), text.data(), text.size(), MSG_NOSIGNAL);
            if (sent < 0) {
                throw std::system_error(errno, std::generic_category(), "send");
            }
            text.remove_prefix(static_cast<std::size_t>(sent));
        }
    }

    FileDescriptor connection_;
    std::string commands_;
    std::string received_;
    bool receiving_ = false;
    bool over_ = false;
};

FileDescriptor listenOnLoopback() {
    FileDescriptor listening(mustSucceed(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket"));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const plain = reinterpret_cast<sockaddr*>(&address);
    mustSucceed(bind(listening.number(), plain, size), "bind");
    mustSucceed(listen(listening.number(), SOMAXCONN), "listen");
    mustSucceed(getsockname(listening.number(), plain, &size), "getsockname");
    std::cout << ntohs(address.sin_port) << std::endl;
    return listening;
}

void run(const char* messagePath) {
    std::ifstream file(messagePath, std::ios::binary);
    const std::string wanted{std::istreambuf_iterator<char>(file), {}};
    if (bodyOf(wanted).empty()) {
        throw std::runtime_error("there is no message to compare with");
    }
    const FileDescriptor listening = listenOnLoopback();
    for (;;) {
        std::array<pollfd, 2> watched{{{STDIN_FILENO, POLLIN, 0}, {listening.number(), POLLIN, 0}}};
        mustSucceed(poll(watched.data(), watched.size(), -1), "poll");
        if (watched[0].revents != 0) {
            return;
        }
        const int socket = mustSucceed(accept4(listening.number(), nullptr, nullptr, SOCK_CLOEXEC), "accept");
        const std::string received = Session(socket).serve();
        const bool same = received.ends_with(kFinalDot) && bodyOf(withoutDots(received)) == bodyOf(wanted);
        std::cout << "octets " << received.size() << " body " << (same ? "same" : "different") << std::endl;
    }
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
