#pragma once

#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace netcodelib {

/**
 * Writes on a thread of its own, so that the next bytes are made while the last ones are written. They are
 * written in their order. It holds at most two pieces: one that is being written, and one that waits.
 *
 *     WriteBehind target([&file](std::string_view bytes) { file.write(bytes); });
 *     target.write(piece); ... target.finish();
 *
 * What the function raises is raised again by the next call. The caller must not use the file before finish()
 * has returned or the object is destroyed. The destructor does not write what still waits.
 */
class WriteBehind {
  public:
    explicit WriteBehind(std::function<void(std::string_view)> write);
    ~WriteBehind();
    WriteBehind(const WriteBehind&) = delete;
    WriteBehind& operator=(const WriteBehind&) = delete;

    /** Takes the bytes and leaves an empty string, with room for more. Blocks while another piece waits. */
    void write(std::string& bytes);

    /** Waits until everything is written. Nothing can be written afterwards. */
    void finish();

  private:
    void run();
    void end();

    std::function<void(std::string_view)> write_;
    std::mutex mutex_;
    std::condition_variable changed_;
    /** The piece that waits, when there is one. */
    std::string piece_;
    bool waits_ = false;
    bool ended_ = false;
    std::exception_ptr problem_;
    /** Declared last, because the thread uses all other members. */
    std::thread thread_;
};

} // namespace netcodelib
