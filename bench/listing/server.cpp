#include "bench/delayed_listener.h"
#include "bench/listing/sample_mailbox.h"
#include "mailserver/pop3_conversation.h"

#include <charconv>
#include <chrono>
#include <cstdint>
#include <exception>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string_view>

namespace {
int numberOf(std::string_view text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < 0) {
        throw std::invalid_argument("not a number: " + std::string(text));
    }
    return number;
}

void serve(std::string_view messages, std::string_view delay, const char* address,
           std::string_view lineBytes) {
    mailserver::Mailbox mailbox;
    bench::fillWithSamples(mailbox, numberOf(messages), static_cast<std::size_t>(numberOf(lineBytes)));
    bench::DelayedListener listener(
        [&mailbox] { return std::make_unique<mailserver::Pop3Conversation>(mailbox); },
        std::chrono::milliseconds(numberOf(delay)),
        [](std::uint64_t roundTrips) { std::cout << roundTrips << std::endl; }, address);
    std::cout << listener.port() << std::endl;
    listener.serve();
}
} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount < 3 || argumentCount > 5) {
        std::cerr << "usage: bench_pop3_server <messages> <delay of an answer in milliseconds>"
                     " [<address> [<bytes of a line>]]\n";
        return 2;
    }
    try {
        serve(arguments[1], arguments[2], argumentCount > 3 ? arguments[3] : "127.0.0.1",
              argumentCount > 4 ? arguments[4] : "0");
    } catch (const std::exception& error) {
        std::cerr << "bench_pop3_server: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
