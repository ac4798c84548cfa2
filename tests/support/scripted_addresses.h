#pragma once

#include "addresses/address_source.h"
#include "addresses/source_in_use.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace support {

/** In place of the program's own: a source of addresses that answers when the test has it answer. */
class ScriptedAddresses {
  public:
    ScriptedAddresses() {
        addresses::replaceSourceInUse([this] {
            ++sources;
            return std::make_unique<Source>(*this);
        });
    }

    ~ScriptedAddresses() { addresses::replaceSourceInUse({}); }

    ScriptedAddresses(const ScriptedAddresses&) = delete;
    ScriptedAddresses& operator=(const ScriptedAddresses&) = delete;

    /** Whether a search runs that nobody has given up. */
    bool isAsked() const { return static_cast<bool>(found_); }

    /** Answers the search that runs. */
    void answer(addresses::FoundAddresses outcome) { std::exchange(found_, {})(std::move(outcome)); }

    /** The texts that were searched for. */
    std::vector<std::string> asked;
    /** How many sources have been made. */
    int sources = 0;
    /** What the next search raises. */
    std::function<void()> trouble;

  private:
    class Source : public addresses::AddressSource {
      public:
        explicit Source(ScriptedAddresses& script) : script_(script) {}

        ~Source() override { script_.found_ = {}; }

        Source(const Source&) = delete;
        Source& operator=(const Source&) = delete;

        void search(std::string typed, std::function<void(addresses::FoundAddresses)> found) override {
            if (script_.trouble) {
                script_.trouble();
            }
            script_.asked.push_back(std::move(typed));
            script_.found_ = std::move(found);
        }

        void giveUp() override { script_.found_ = {}; }

      private:
        ScriptedAddresses& script_;
    };

    std::function<void(addresses::FoundAddresses)> found_;
};

} // namespace support
