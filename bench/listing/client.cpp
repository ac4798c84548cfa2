#include "components/poplib/pop.h"
#include "email/header_events.h"
#include "email/messages.h"

#include <QCoreApplication>

#include <chrono>
#include <cstdint>
#include <ctime>
#include <exception>
#include <iostream>
#include <string>

namespace {
constexpr int kBodyLines = 25;

/** Receives the summaries of a whole mailbox, with the component's events wired as the login window does. */
class Listing {
  public:
    explicit Listing(const QString& server) {
        pop_.setMailServer(server);
        pop_.setLoginUser("reader");
        pop_.setLoginPassword("demo");
        pop_.Header = [this](const std::string& field, const std::string& value) {
            ++headerLines_;
            headerEvents_.add(messages_.at(current_), field, value);
        };
        pop_.Transfer = [this](std::int32_t /*bytesTransferred*/, const std::string& text) {
            ++bodyLines_;
            messages_.at(current_).BodyText.append(text).append("\r\n");
        };
    }

    void fetch() {
        pop_.setListing(true);
        pop_.issueRequest(poplib::Request::ConnectAndLogOn);
        pop_.listAhead(1, pop_.messageCount(), kBodyLines);
        for (current_ = 1; current_ <= pop_.messageCount(); ++current_) {
            pop_.setCurrentMessage(current_);
            email::MessageSummary& summary = messages_.at(current_);
            summary.Size = pop_.currentMessageSize().value_or(0);
            email::resetForListing(summary);
            pop_.setBodyLineLimit(kBodyLines);
            pop_.issueRequest(poplib::Request::RetrieveCurrentMessage);
        }
        pop_.issueRequest(poplib::Request::LogOffAndDisconnect);
    }

    /** What was received, in the words that the script beside it uses for the other client. */
    void describe(std::ostream& out) {
        std::size_t kept = 0;
        std::int64_t sizes = 0;
        for (int number = 1; number <= pop_.messageCount(); ++number) {
            const email::MessageSummary& message = messages_.at(number);
            kept += message.HeaderText.size() + message.BodyText.size() + message.From.size() +
                    message.Subject.size() + message.Date.size() + message.Boundary.size();
            sizes += message.Size;
        }
        out << " messages " << pop_.messageCount() << " sizes " << sizes << " header-lines " << headerLines_
            << " body-lines " << bodyLines_ << " bytes-kept " << kept << " round-trips " << pop_.roundTrips();
    }

  private:
    POPLib::POP pop_;
    email::MessageTable messages_;
    email::HeaderEvents headerEvents_;
    std::int16_t current_ = 0;
    std::uint64_t headerLines_ = 0;
    std::uint64_t bodyLines_ = 0;
};

void run(const QString& server) {
    Listing listing(server);
    const auto start = std::chrono::steady_clock::now();
    const std::clock_t work = std::clock();
    listing.fetch();
    const double processor = static_cast<double>(std::clock() - work) / CLOCKS_PER_SEC;
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    std::cout << "seconds " << elapsed.count() << " processor " << processor;
    listing.describe(std::cout);
    std::cout << std::endl;
}
} // namespace

int main(int argumentCount, char** arguments) {
    const QCoreApplication application(argumentCount, arguments);
    if (argumentCount != 2) {
        std::cerr << "usage: bench_listing_client <host:port>\n";
        return 2;
    }
    try {
        run(QString::fromLocal8Bit(arguments[1]));
    } catch (const std::exception& error) {
        std::cerr << "bench_listing_client: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
