#pragma once

#include "platform/runtime_error.h"
#include "platform/while_true.h"

namespace protocol {

/**
 * Lets a component run only one request at a time, because other handlers run while a request waits for the
 * server.
 */
class RequestGuard {
  public:
    /** True while a request runs, which is then further down the caller's stack. */
    bool isRunning() const noexcept { return running_; }

    /**
     * Runs the request. Any error, one raised by a listener included, leaves the dialogue at an unknown
     * point. Before the error is passed on, whenFailed sets this right, usually by closing the session; it
     * must not throw.
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
