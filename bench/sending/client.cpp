// Sends one message with an attachment as the compose window does, the encoding included:
//
//     bench_sending_client <host:port> <drive path of the attachment>

#include "bench/peak_memory.h"
#include "components/netcodelib/netcode.h"
#include "components/smtplib/smtp.h"
#include "message/composer.h"
#include "platform/background.h"

#include <QCoreApplication>

#include <chrono>
#include <exception>
#include <iostream>
#include <string>
#include <utility>

namespace {
using smtplib::Request;

EncodedFile encodeAttachment(const QString& attachment, std::string_view closingLine) {
    NetCodeLib::NetCode codec;
    codec.setSourceFile(attachment);
    codec.setCodingFormat(netcodelib::NetCode::kBase64);
    codec.setTargetFile(QStringLiteral("C:\\_brndwake.tmp"));
    codec.setOverwrite(true);
    codec.setClosingText(std::string(closingLine));
    platform::runInBackground([&codec] { codec.setAction(netcodelib::Action::Encode); });
    return {codec.targetFile(), codec.takeEncodedFile()};
}

void send(const QString& server, const QString& attachment) {
    ComposedMessage message = Compose("See the file.", attachment, encodeAttachment);
    SMTPLib::SMTP smtp;
    smtp.setBlocking(true);
    smtp.setHost(server);
    smtp.issueRequest(Request::OpenConnection);
    smtp.setSender("ann@example.org");
    smtp.setRecipients("bob@example.org");
    smtp.setSubject("A file");
    smtp.setAdditionalHeaders(message.ExtraHeaders);
    smtp.setBody(message.MessageBody);
    smtp.setDataFile(message.DataFile.path, std::move(message.DataFile.file));
    smtp.issueRequest(Request::TransmitMessage);
    smtp.issueRequest(Request::CloseConnection);
}

void run(const QString& server, const QString& attachment) {
    const long peakBefore = bench::peakMemory();
    const auto start = std::chrono::steady_clock::now();
    send(server, attachment);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    std::cout << "seconds " << elapsed.count() << " memory-before " << peakBefore << " memory-after "
              << bench::peakMemory() << std::endl;
}
} // namespace

int main(int argumentCount, char** arguments) {
    const QCoreApplication application(argumentCount, arguments);
    if (argumentCount != 3) {
        std::cerr << "usage: bench_sending_client <host:port> <drive path of the attachment>\n";
        return 2;
    }
    try {
        run(QString::fromLocal8Bit(arguments[1]), QString::fromLocal8Bit(arguments[2]));
    } catch (const std::exception& error) {
        std::cerr << "bench_sending_client: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
