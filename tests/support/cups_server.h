#pragma once

#include "tests/support/temporary_folder.h"

#include <QProcess>

#include <string>
#include <vector>

namespace support {

/**
 * A real CUPS with at most one printer, its default printer, which takes every document or none and keeps it.
 * Configuration, socket, queue and log are in temporary folders; the system's own printers are neither seen
 * nor touched. It ends with the object, and with the test's process should that die. It runs as whoever runs
 * the tests, the superuser included.
 */
class CupsServer {
  public:
    /** Why no server can be had on this computer, in a sentence to skip a test with; empty when one can. */
    static std::string whyUnavailable();

    enum class Queue { Accepting, Rejecting, None };

    /**
     * From here on this process asks no other printing system than a CupsServer; without one there is no
     * printer at all.
     */
    static void takeThePlaceOfTheSystem();

    /** Starts the server and returns when it answers. \throws std::runtime_error, with its log, when it does
     * not. */
    explicit CupsServer(Queue queue = Queue::Accepting);
    ~CupsServer();
    CupsServer(const CupsServer&) = delete;
    CupsServer& operator=(const CupsServer&) = delete;

    /** Ends it before the object ends: as if the printing system had died. */
    void stop();

    /** The documents that it was given, in their order, byte for byte. */
    std::vector<std::string> documents() const;

    /** What the server has written to its log. */
    std::string log() const;

  private:
    void writeConfiguration(Queue queue) const;

    TemporaryFolder folder_;
    QProcess process_;
};

} // namespace support
