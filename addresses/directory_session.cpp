#include "addresses/directory_session.h"

#include "components/transport/stream.h"

#include <QCoreApplication>
#include <QTimer>

#include <utility>

namespace addresses {

using directory::Message;
using transport::Outcome;
using transport::Security;
using Kind = DirectoryEnd::Kind;

namespace {
/** Most bytes that are taken in one turn of the event loop, and in a session. */
constexpr long long kTurnBytes = 64LL << 10;
constexpr std::size_t kSessionBytes = 8U << 20U;
constexpr int kSizeLimitExceeded = 4;
constexpr int kConfidentialityRequired = 13;
} // namespace

/**
 * The session itself. The event loop keeps it alive during each turn, so that whoever is told at the end of
 * one may let go of it.
 */
class DirectorySession::Dialogue : public std::enable_shared_from_this<Dialogue> {
  public:
    explicit Dialogue(transport::ServerName server) : server_(std::move(server)) {}

    void beginTime(std::chrono::milliseconds patience) {
        QTimer::singleShot(patience, Qt::PreciseTimer, QCoreApplication::instance(),
                           [weak = weak_from_this()] {
                               if (const auto self = weak.lock()) {
                                   self->hasExpired_ = true;
                                   self->turn();
                               }
                           });
    }

    void open(Told told) {
        told_ = std::move(told);
        directory::loadConversations(whileAlive([](Dialogue& self) { self.connect(); }));
    }

    void logOn(const std::string& name, const std::string& password, Told told) {
        told_ = std::move(told);
        if (!protection_.serverProven) {
            refused_ = kConfidentialityRequired;
        } else if (step_ == Step::Ready) {
            conversation_->logOn(name, password);
            send();
        }
        takeTurn();
    }

    void search(const directory::SearchRequest& request, std::size_t most, Told told) {
        told_ = std::move(told);
        most_ = most;
        if (step_ == Step::Ready) {
            conversation_->search(request);
            send();
        }
        takeTurn();
    }

    void close() {
        told_ = nullptr;
        stream_.reset();
        tls_ = nullptr;
    }

    const transport::Protection& protection() const noexcept { return protection_; }

    std::optional<transport::Certificate> certificate() const {
        return tls_ == nullptr ? std::nullopt : tls_->certificate();
    }

  private:
    enum class Step { Closed, Opening, AskingForTls, Encrypting, Ready };

    /** The action, as long as somebody is to be told something. */
    template <class Action>
    std::function<void()> whileAlive(Action action) {
        return [weak = weak_from_this(), action] {
            if (const auto self = weak.lock(); self && self->told_) {
                action(*self);
            }
        };
    }

    /** Streams tell of changes while they are at work, so what is done about them is done afterwards. */
    void takeTurn() {
        if (!std::exchange(turnIsDue_, true)) {
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [weak = weak_from_this()] {
                    if (const auto self = weak.lock()) {
                        self->turn();
                    }
                },
                Qt::QueuedConnection);
        }
    }

    void turn() {
        turnIsDue_ = false;
        if (!told_) {
            return;
        }
        if (hasExpired_) {
            finish({Kind::TimedOut});
        } else if (const int code = std::exchange(refused_, 0); code != 0) {
            finish({Kind::Answered, Outcome::Done, code});
        } else if (step_ == Step::Closed) {
            finish({Kind::Broken});
        } else if (step_ != Step::Opening && step_ != Step::Encrypting) {
            hear();
        } else if (stream_->state() == transport::Stream::State::Open) {
            begin();
        } else if (stream_->state() == transport::Stream::State::Closed) {
            fail({Kind::NotOpened, stream_->failure()});
        }
    }

    void connect() {
        const bool encrypted = server_.security == Security::FromTheStart;
        conversation_ = directory::makeConversation();
        if (!conversation_) {
            finish({Kind::NoLibrary});
            return;
        }
        auto clear = encrypted ? nullptr : transport::makeClearStream();
        auto tls = encrypted ? transport::makeTlsStream() : nullptr;
        clear_ = clear.get();
        if (!clear && !tls) {
            finish({Kind::NotOpened, encrypted ? Outcome::HandshakeFailed : Outcome::Unreachable});
            return;
        }
        if (tls) {
            tls_ = tls.get();
            use(std::move(tls));
        } else {
            use(std::move(clear));
        }
        step_ = Step::Opening;
        stream_->open(server_);
    }

    void use(std::unique_ptr<transport::Stream> stream) {
        stream_ = std::move(stream);
        stream_->changed = [this] { takeTurn(); };
    }

    /** The stream is open, encrypted or in clear. */
    void begin() {
        const bool isEncrypted = step_ == Step::Encrypting || server_.security == Security::FromTheStart;
        if (!isEncrypted && !staysInClear_ && server_.security != Security::Never) {
            step_ = Step::AskingForTls;
            conversation_->startTls();
            send();
            return;
        }
        step_ = Step::Ready;
        if (isEncrypted) {
            protection_ = {tls_->version(), mustBeProven(server_.security)};
        }
        finish({Kind::Answered});
    }

    void hear() {
        const std::string bytes = stream_->read(kTurnBytes);
        received_ += bytes.size();
        conversation_->receive(bytes);
        while (const auto message = conversation_->next()) {
            if (message->kind != Message::Kind::Entry) {
                take(*message);
                return;
            }
            entries_.push_back(message->entry);
            if (entries_.size() == most_) {
                stream_->abort();
                finish({Kind::Answered, Outcome::Done, kSizeLimitExceeded});
                return;
            }
        }
        const bool hasEnded =
            stream_->state() == transport::Stream::State::Closed && stream_->bytesAvailable() == 0;
        if (hasEnded || received_ > kSessionBytes) {
            fail({Kind::Broken});
        } else if (stream_->bytesAvailable() > 0) {
            takeTurn();
        }
    }

    void take(const Message& message) {
        const bool isResult = message.kind == Message::Kind::Result;
        DirectoryEnd end{isResult ? Kind::Answered : Kind::Broken, Outcome::Done, message.code, message.said};
        if (step_ == Step::AskingForTls && isResult && message.code == 0) {
            encrypt();
        } else if (step_ == Step::AskingForTls && isResult) {
            end.kind = Kind::NotEncrypted;
            fail(end);
        } else if (isResult) {
            finish(end);
        } else {
            fail(end);
        }
    }

    void encrypt() {
        auto tls = transport::makeTlsStream();
        // What came in clear behind the answer must not count as if it had come encrypted.
        const bool spokeTooEarly = conversation_->hasUnreadBytes() || stream_->bytesAvailable() > 0;
        const int descriptor = spokeTooEarly || !tls ? -1 : clear_->takeDescriptor();
        if (descriptor < 0) {
            fail({Kind::NotOpened, Outcome::HandshakeFailed});
            return;
        }
        clear_ = nullptr;
        tls_ = tls.get();
        transport::TlsStream& encrypted = *tls;
        use(std::move(tls));
        step_ = Step::Encrypting;
        encrypted.encrypt(descriptor, server_);
    }

    /** Ends with the failure, unless there is another way. */
    void fail(const DirectoryEnd& end) {
        const bool isAboutEncryption = step_ == Step::AskingForTls || step_ == Step::Encrypting;
        if (isAboutEncryption && server_.security == Security::WhenOffered) {
            staysInClear_ = true;
            tls_ = nullptr;
            connect();
            return;
        }
        finish(end);
    }

    void finish(const DirectoryEnd& end) {
        if (stream_ && end.kind != Kind::Answered) {
            stream_->abort();
        }
        if (!stream_ || stream_->state() == transport::Stream::State::Closed) {
            step_ = Step::Closed;
        }
        const Told told = std::exchange(told_, nullptr);
        told({end, std::exchange(entries_, {})});
    }

    void send() {
        stream_->write(conversation_->takeBytesToSend());
        stream_->flush();
    }

    transport::ServerName server_;
    Told told_;
    Step step_ = Step::Closed;
    bool turnIsDue_ = false;
    bool hasExpired_ = false;
    /** Encryption has failed where it is not demanded. */
    bool staysInClear_ = false;
    /** The result of what was not even asked; 0 for none. */
    int refused_ = 0;
    std::size_t most_ = 0;
    std::size_t received_ = 0;
    std::vector<directory::Entry> entries_;
    transport::Protection protection_;
    std::unique_ptr<directory::Conversation> conversation_;
    std::unique_ptr<transport::Stream> stream_;
    /** The stream while it is in clear, and once it is encrypted or should have been. */
    transport::ClearStream* clear_ = nullptr;
    transport::TlsStream* tls_ = nullptr;
};

DirectorySession::DirectorySession(transport::ServerName server, std::chrono::milliseconds patience)
    : dialogue_(std::make_shared<Dialogue>(std::move(server))) {
    dialogue_->beginTime(patience);
}

DirectorySession::~DirectorySession() {
    dialogue_->close();
}

void DirectorySession::open(Told told) {
    dialogue_->open(std::move(told));
}

void DirectorySession::logOn(const std::string& name, const std::string& password, Told told) {
    dialogue_->logOn(name, password, std::move(told));
}

void DirectorySession::search(const directory::SearchRequest& request, std::size_t most, Told told) {
    dialogue_->search(request, most, std::move(told));
}

const transport::Protection& DirectorySession::protection() const noexcept {
    return dialogue_->protection();
}

std::optional<transport::Certificate> DirectorySession::certificate() const {
    return dialogue_->certificate();
}

} // namespace addresses
