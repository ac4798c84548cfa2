#include "doctor/mailbox_survey.h"

#include "doctor/message_findings.h"
#include "email/messages.h"
#include "platform/error_meanings.h"
#include "platform/runtime_error.h"
#include "retrieval/log_in_failures.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <variant>

namespace doctor {

namespace errors = platform::errors;

namespace {
/** Body lines to ask for, so that about as much comes as is looked at. */
std::int32_t linesOf(std::int32_t size) {
    constexpr std::int32_t usualLine = 76; // bytes
    const auto most = static_cast<std::int32_t>(kMostBytesLookedAt);
    // No message has more lines than bytes.
    return size <= most ? std::max(size, 1) : most / usualLine;
}

/** The messages of one mailbox. */
class Mailbox {
  public:
    Mailbox(poplib::POP& pop, MailMode mode, const Surveys& surveys)
        : pop_(pop), mode_(mode), surveys_(surveys) {}

    void lookThrough() {
        const int count = pop_.messageCount();
        addCount(count);
        for (int number = 1; number <= count; ++number) {
            surveys_.tell(QStringLiteral("Message %1 of %2").arg(number).arg(count));
            pop_.setCurrentMessage(static_cast<std::int16_t>(number));
            const int error = platform::errorNumberOf([this, number] { look(number); });
            if (error != 0) {
                addBreak(number, error);
                break;
            }
        }
        addRefused(count);
    }

  private:
    void add(Finding finding) { surveys_.report.findings.push_back(std::move(finding)); }

    void addCount(int count) {
        if (mode_ != MailMode::House || count <= email::MessageTable::kSize) {
            return;
        }
        Finding finding;
        finding.grade = Grade::Stops;
        finding.about = QStringLiteral("mailbox");
        finding.message = email::MessageTable::kSize + 1;
        finding.number = errors::SubscriptOutOfRange;
        finding.box = boxOfFailedLogIn(finding.number);
        finding.text = QStringLiteral("%1 messages wait, and more than %2 end the log-in.")
                           .arg(count)
                           .arg(email::MessageTable::kSize);
        finding.advice = QStringLiteral("Move old mail elsewhere, or start with --mail=standard.");
        add(std::move(finding));
    }

    void look(int number) {
        MessageSeen seen;
        seen.number = number;
        seen.size = pop_.currentMessageSize();
        std::int32_t lines = 0;
        const std::int32_t asked = linesOf(seen.size.value_or(0));
        bool fits = true;
        const bool given = pop_.look(asked, [&](const poplib::Event& event) {
            if (const auto* const header = std::get_if<poplib::HeaderLine>(&event)) {
                seen.header.push_back(*header);
            } else if (const auto* const body = std::get_if<poplib::BodyLine>(&event)) {
                ++lines;
                fits = fits && seen.body.size() + body->text.size() <= kMostBytesLookedAt;
                if (fits) {
                    seen.body.append(body->text).append("\r\n");
                }
            }
        });
        if (!given) {
            refused_.emplace_back(number, seen.size);
            return;
        }
        seen.isWhole = fits && lines < asked;
        std::ranges::move(findingsOf(seen, mode_), std::back_inserter(surveys_.report.findings));
    }

    /** The session has ended in the midst of the mailbox. */
    void addBreak(int number, int error) {
        Finding finding;
        finding.grade = Grade::Stops;
        finding.about = QStringLiteral("message");
        finding.message = number;
        finding.number = error;
        finding.box = boxOfFailedLogIn(error);
        finding.text = QString::fromStdString(platform::meaningOf(error)) +
                       QStringLiteral(" This and the following messages were not looked at.");
        finding.advice = adviceFor(error, QStringLiteral("POP3"));
        add(std::move(finding));
    }

    /** What is known of messages that the server gives no lines of. */
    void addRefused(int count) {
        if (refused_.empty()) {
            return;
        }
        Finding finding;
        finding.grade = Grade::Met;
        finding.about = QStringLiteral("mailbox");
        finding.text =
            QStringLiteral(
                "The server refuses TOP for %1 of %2 messages. Of these only the sizes were looked at, since "
                "fetching them might mark them as read; the program fetches the whole of them for the list, "
                "each time.")
                .arg(refused_.size())
                .arg(count);
        finding.advice = QStringLiteral("Let the server offer TOP.");
        add(std::move(finding));
        for (const auto& [number, size] : refused_) {
            std::ranges::move(findingsOfSize(number, size), std::back_inserter(surveys_.report.findings));
        }
    }

    poplib::POP& pop_;
    MailMode mode_;
    const Surveys& surveys_;
    std::vector<std::pair<int, std::optional<std::int32_t>>> refused_;
};
} // namespace

void surveyMailbox(poplib::POP& pop, MailMode mode, const Surveys& surveys) {
    Mailbox(pop, mode, surveys).lookThrough();
}

} // namespace doctor
