// Fetches the only message of a mailbox and saves its attachment, in the steps of the windows:
//
//     bench_reading_client <host:port> <drive path of the saved attachment>

#include "bench/peak_memory.h"
#include "components/netcodelib/netcode.h"
#include "components/poplib/pop.h"
#include "email/header_events.h"
#include "email/messages.h"
#include "email/own_files.h"
#include "message/attachment_file.h"
#include "message/house_reader.h"
#include "platform/background.h"
#include "platform/drives.h"
#include "platform/private_file.h"

#include <QCoreApplication>

#include <chrono>
#include <cstdint>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {
using poplib::Request;

void fetch(const QString& server, email::MessageSummary& message) {
    POPLib::POP pop;
    email::HeaderEvents headerEvents;
    pop.Header = [&](const std::string& field, const std::string& value) {
        headerEvents.add(message, field, value);
    };
    pop.Transfer = [&](std::int32_t /*bytesTransferred*/, const std::string& text) {
        message.BodyText.append(text).append("\r\n");
    };
    pop.setMailServer(server);
    pop.setLoginUser("reader");
    pop.setLoginPassword("demo");
    pop.issueRequest(Request::ConnectAndLogOn);
    pop.setCurrentMessage(1);
    message.Size = pop.currentMessageSize().value_or(0);
    message.BodyText.reserve(static_cast<std::size_t>(message.Size));
    pop.setBodyLineLimit(0);
    pop.issueRequest(Request::RetrieveCurrentMessage);
    pop.issueRequest(Request::LogOffAndDisconnect);
}

void parse(const email::MessageSummary& message) {
    ReadMessage read;
    platform::runInBackground([&] {
        read = readHouseMessage(message);
        for (const FoundAttachment& attachment : read.attachments) {
            writeAttachment(attachment.part);
        }
    });
    if (read.attachments.empty() || read.text.value_or(std::string()).empty()) {
        throw std::runtime_error("the message should have a text and an attachment");
    }
}

void save(const QString& path) {
    { const platform::PrivateOutput trial(platform::nativePath(path), platform::Writing::BesideTarget); }
    NetCodeLib::NetCode codec;
    codec.setOverwrite(true);
    codec.setSourceFile(QLatin1String(email::kEncodedAttachmentFileName));
    codec.setTargetFile(path);
    codec.setCodingFormat(netcodelib::NetCode::kBase64);
    codec.setFileName(QStringLiteral("FILE.BIN"));
    platform::runInBackground([&codec] { codec.setAction(netcodelib::Action::Decode); });
}

void run(const QString& server, const QString& path) {
    using Clock = std::chrono::steady_clock;
    using Seconds = std::chrono::duration<double>;
    const long peakBefore = bench::peakMemory();
    email::MessageSummary message;
    const Clock::time_point start = Clock::now();
    fetch(server, message);
    const Clock::time_point fetched = Clock::now();
    parse(message);
    const Clock::time_point parsed = Clock::now();
    save(path);
    const Clock::time_point saved = Clock::now();
    std::cout << "seconds " << Seconds(saved - start).count() << " fetch " << Seconds(fetched - start).count()
              << " parse " << Seconds(parsed - fetched).count() << " save " << Seconds(saved - parsed).count()
              << " memory-before " << peakBefore << " memory-after " << bench::peakMemory() << std::endl;
}
} // namespace

int main(int argumentCount, char** arguments) {
    const QCoreApplication application(argumentCount, arguments);
    if (argumentCount != 3) {
        std::cerr << "usage: bench_reading_client <host:port> <drive path of the saved attachment>\n";
        return 2;
    }
    try {
        run(QString::fromLocal8Bit(arguments[1]), QString::fromLocal8Bit(arguments[2]));
    } catch (const std::exception& error) {
        std::cerr << "bench_reading_client: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
