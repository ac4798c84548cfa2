#include "selftest/round.h"

#include "selftest/hands.h"

#include <QTimer>

#include <cstdlib>
#include <exception>
#include <utility>

namespace selftest {

Round::Round(std::vector<Step> steps, std::string exit, Teller& teller, const SelfTestOrder& order,
             const Places& places, LocalServers& servers)
    : steps_(std::move(steps)),
      exit_(std::move(exit)),
      teller_(teller),
      scene_{order, places, servers, Boxes([this](const QString& text) { takeWrongBox(text); })} {}

void Round::begin() {
    doNext();
}

void Round::doNext() {
    if (next_ == steps_.size()) {
        pressExit();
        return;
    }
    const Step& step = steps_.at(next_++);
    run(step);
    if (teller_.hasFailed() && step.afterFailure == Step::AfterFailure::Stop) {
        std::_Exit(EXIT_FAILURE);
    }
    // Closed windows are destroyed in between, as they are between two deeds of a person.
    QTimer::singleShot(0, [this] { doNext(); });
}

void Round::run(const Step& step) {
    teller_.begin(step.name);
    try {
        const QString stray = std::exchange(strayBox_, {});
        require(stray.isEmpty(), stray);
        step.run(scene_);
        const QString missing = scene_.boxes.takeMissing();
        require(missing.isEmpty(), missing);
        teller_.end(Outcome::Ok);
    } catch (const NotHere& what) {
        teller_.end(Outcome::NotHere, what.what());
    } catch (const std::exception& why) {
        teller_.end(Outcome::Failed, why.what());
    }
    scene_.boxes.takeMissing();
    if (teller_.hasFailed()) {
        // Further boxes have come of the same failure.
        strayBox_.clear();
    }
}

void Round::takeWrongBox(const QString& text) {
    const QString said = QStringLiteral("a box says \"%1\"").arg(text);
    if (teller_.isInStep()) {
        // Told at once, since the program may end behind this box.
        teller_.end(Outcome::Failed, said.toStdString());
    } else {
        strayBox_ = said;
    }
}

void Round::pressExit() {
    teller_.beginLast(exit_);
    try {
        require(strayBox_.isEmpty(), strayBox_);
        press("frmMain", "cmdExit");
        teller_.end(Outcome::Failed, "Exit does not end it");
    } catch (const Failure& why) {
        teller_.end(Outcome::Failed, why.what());
    }
    std::_Exit(EXIT_FAILURE);
}

} // namespace selftest
