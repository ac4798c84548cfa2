#include "selftest/local_servers.h"

#include "demo/encryption.h"
#include "mailserver/pop3_conversation.h"
#include "mailserver/smtp_conversation.h"

#include <exception>
#include <memory>
#include <stdexcept>

namespace selftest {

namespace {
std::string listenAt(demo::Listener& listener, const char* scheme) {
    if (!listener.start(0)) {
        throw std::runtime_error(listener.errorText().toStdString());
    }
    return scheme + std::string("127.0.0.1:") + std::to_string(listener.port());
}

mailserver::Pop3Features popFeatures(Encrypted encrypted) {
    mailserver::Pop3Features features;
    if (encrypted == Encrypted::Yes) {
        features.mechanisms = demo::mechanisms();
        features.utf8 = true;
    }
    return features;
}

mailserver::SmtpFeatures smtpFeatures(Encrypted encrypted) {
    mailserver::SmtpFeatures features;
    if (encrypted == Encrypted::Yes) {
        features.startTls = true;
        features.demandsEncryption = true;
        features.demandsLogOn = true;
        features.mechanisms = demo::mechanisms();
    }
    return features;
}
} // namespace

LocalServers::LocalServers(const std::vector<std::string>& messages, Encrypted encrypted,
                           const std::filesystem::path& root) {
    thread_.setObjectName(QStringLiteral("mail servers"));
    inThread_.moveToThread(&thread_);
    thread_.start();
    std::exception_ptr fault;
    QMetaObject::invokeMethod(
        &inThread_,
        [&] {
            try {
                start(messages, encrypted, root);
            } catch (const std::exception&) {
                fault = std::current_exception();
            }
        },
        Qt::BlockingQueuedConnection);
    if (fault) {
        thread_.quit();
        thread_.wait();
        std::rethrow_exception(fault);
    }
}

LocalServers::~LocalServers() {
    QMetaObject::invokeMethod(
        &inThread_,
        [this] {
            pop_.reset();
            smtp_.reset();
        },
        Qt::BlockingQueuedConnection);
    thread_.quit();
    thread_.wait();
}

std::size_t LocalServers::messageCount() {
    std::size_t count = 0;
    QMetaObject::invokeMethod(
        &inThread_, [&] { count = mailbox_.messages().size(); }, Qt::BlockingQueuedConnection);
    return count;
}

void LocalServers::start(const std::vector<std::string>& messages, Encrypted encrypted,
                         const std::filesystem::path& root) {
    for (const std::string& message : messages) {
        mailbox_.append(message);
    }
    std::optional<demo::Tls> fromTheStart;
    std::optional<demo::Tls> later;
    if (encrypted == Encrypted::Yes) {
        fromTheStart = {demo::newIdentity(root), true};
        later = {fromTheStart->configuration, false};
    }
    const mailserver::Accounts accounts = mailserver::only(kMember, kPassword);
    pop_.emplace(
        [this, accounts, features = popFeatures(encrypted)] {
            return std::make_unique<mailserver::Pop3Conversation>(mailbox_, accounts, features);
        },
        fromTheStart);
    smtp_.emplace(
        [this, accounts, features = smtpFeatures(encrypted)] {
            mailserver::SmtpService service = mailserver::deliveryInto(mailbox_, features);
            service.accounts = accounts;
            return std::make_unique<mailserver::SmtpConversation>(service);
        },
        later);
    popServer_ = listenAt(*pop_, encrypted == Encrypted::Yes ? "tls://" : "plain://");
    smtpServer_ = listenAt(*smtp_, encrypted == Encrypted::Yes ? "starttls://" : "plain://");
}

} // namespace selftest
