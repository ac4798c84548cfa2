#pragma once

#include "selftest/boxes.h"
#include "selftest/local_servers.h"
#include "selftest/private_folder.h"
#include "selftest/teller.h"

#include <QString>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

struct SelfTestOrder;

namespace selftest {

/** What the steps of one run work with. */
struct Scene {
    const SelfTestOrder& order;
    const Places& places;
    LocalServers& servers;
    Boxes boxes;
};

/** One step; it raises Failure or NotHere when it does not go well. */
struct Step {
    std::string name;
    std::function<void(Scene&)> run;
    /** Whether what comes behind it makes sense after it has failed. */
    enum class AfterFailure { GoOn, Stop } afterFailure = AfterFailure::Stop;
};

/** Everything that members do, over connections in clear. */
std::vector<Step> wholeRound();

/** Log-in and sending over encrypted connections, with certificates that are checked. */
std::vector<Step> encryptedRound();

/** Does one step after the other, each from the event loop, and ends the process by the button Exit. */
class Round {
  public:
    /** The last step, Exit, has a name of its own in each run. */
    Round(std::vector<Step> steps, std::string exit, Teller& teller, const SelfTestOrder& order,
          const Places& places, LocalServers& servers);

    /** Begins with the first step. Call it from the event loop; this must live until the process ends. */
    void begin();

  private:
    void doNext();
    void run(const Step& step);
    void pressExit();
    void takeWrongBox(const QString& text);

    std::vector<Step> steps_;
    std::string exit_;
    std::size_t next_ = 0;
    /** What a box says that has come between two steps; the next one has failed with it. */
    QString strayBox_;
    Teller& teller_;
    Scene scene_;
};

} // namespace selftest
