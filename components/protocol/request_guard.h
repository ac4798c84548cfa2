#pragma once

#include "platform/runtime_error.h"
#include "platform/while_true.h"

namespace protocol {

/** Lets one request of a component run at a time: while one waits for the server, other handlers run. */
class RequestGuard {
  public:
    /** True while a request runs, further down the stack of whoever asks. */
    bool isRunning() const noexcept { return running_; }

    /**
     * Runs the request. Whatever it throws, a listener's error included, leaves the dialogue at an unknown
     * point: whenFailed, which must not throw, sees to that before the error goes on.
     * \throws RuntimeError 20102 while another request runs, and whatever the request throws.
     */
    template <class Request, class WhenFailed>
    void run(const Request& request, const WhenFailed& whenFailed) {
        if (running_) {
            throw platform::RuntimeError(platform::errors::MailServerBusy);
        }
        const platform::WhileTrue running(running_);
        try {
            request();
        } catch (...) {
            whenFailed();
            throw;
        }
    }

  private:
    bool running_ = false;
};

} // namespace protocol
