// Two networks that lie a distance apart, for benchmarks:
//
//     bench_distant_link <time of a round trip in milliseconds>
//
// makes two network namespaces, joined by nothing but two network devices (TUN), and carries each packet from
// one to the other, half of the round trip later. Addresses, sockets and the slow start of connections are
// the system's; only the wire is ours. It writes a line with its process number and the numbers of two
// descriptors:
//
//     nsenter --net=/proc/<process>/fd/<descriptor> <command>
//
// runs a command in the near network (10.77.0.1) or in the far one (10.77.0.2). All of it ends with the
// standard input. Only the superuser can make networks.

#include "platform/file_descriptor.h"

#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstring>
#include <ctime>
#include <deque>
#include <exception>
#include <fcntl.h>
#include <iostream>
#include <linux/if_tun.h>
#include <net/if.h>
#include <netinet/in.h>
#include <poll.h>
#include <sched.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace {
using Clock = std::chrono::steady_clock;
using platform::FileDescriptor;

constexpr std::size_t kPacketBytes = 2048;
/** No burst of a benchmark is longer, so no packet is lost. */
constexpr int kPacketsWaiting = 30'000;

int mustSucceed(int result, const char* what) {
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), what);
    }
    return result;
}

ifreq requestFor(std::string_view device) {
    ifreq request{};
    device.copy(static_cast<char*>(request.ifr_name), sizeof request.ifr_name - 1);
    return request;
}

void setAddress(int socket, unsigned long what, std::string_view device, const char* address) {
    ifreq request = requestFor(device);
    sockaddr_in internet{};
    internet.sin_family = AF_INET;
    inet_pton(AF_INET, address, &internet.sin_addr);
    std::memcpy(&request.ifr_addr, &internet, sizeof internet);
    mustSucceed(ioctl(socket, what, &request), "address");
}

void switchOn(int socket, std::string_view device) {
    ifreq request = requestFor(device);
    request.ifr_flags = IFF_UP | IFF_RUNNING;
    mustSucceed(ioctl(socket, SIOCSIFFLAGS, &request), device.data());
}

/** One of the two networks. The process stays in the one that was made last. */
struct Network {
    explicit Network(const char* address) {
        mustSucceed(unshare(CLONE_NEWNET), "a network of its own");
        space = FileDescriptor(mustSucceed(open("/proc/self/ns/net", O_RDONLY | O_CLOEXEC), "network"));
        device = FileDescriptor(
            mustSucceed(open("/dev/net/tun", O_RDWR | O_NONBLOCK | O_CLOEXEC), "/dev/net/tun"));
        constexpr const char* name = "wire";
        ifreq request = requestFor(name);
        request.ifr_flags = IFF_TUN | IFF_NO_PI;
        mustSucceed(ioctl(device.number(), TUNSETIFF, &request), "TUNSETIFF");
        const FileDescriptor socket(mustSucceed(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0), "socket"));
        setAddress(socket.number(), SIOCSIFADDR, name, address);
        setAddress(socket.number(), SIOCSIFNETMASK, name, "255.255.255.0");
        request = requestFor(name);
        request.ifr_qlen = kPacketsWaiting;
        mustSucceed(ioctl(socket.number(), SIOCSIFTXQLEN, &request), "SIOCSIFTXQLEN");
        switchOn(socket.number(), name);
        switchOn(socket.number(), "lo");
    }

    FileDescriptor space;
    FileDescriptor device;
};

/** The wire in one direction. */
class Direction {
  public:
    Direction(const Network& from, const Network& to, Clock::duration time)
        : from_(from.device.number()), to_(to.device.number()), time_(time) {}

    int source() const noexcept { return from_; }

    /** Takes all packets that have left. */
    void take() {
        std::array<char, kPacketBytes> packet{};
        ssize_t bytes = 0;
        while ((bytes = read(from_, packet.data(), packet.size())) > 0) {
            packets_.push_back(
                {Clock::now() + time_, std::string(packet.data(), static_cast<std::size_t>(bytes))});
        }
        if (bytes < 0 && errno != EAGAIN) {
            throw std::system_error(errno, std::generic_category(), "a packet that left");
        }
    }

    /** Delivers what has arrived by now. */
    void deliver() {
        while (!packets_.empty() && packets_.front().arrives <= Clock::now()) {
            const std::string& bytes = packets_.front().bytes;
            mustSucceed(static_cast<int>(write(to_, bytes.data(), bytes.size())), "a packet that arrives");
            packets_.pop_front();
        }
    }

    /** When the next packet arrives; the end of time when none is on its way. */
    Clock::time_point next() const {
        return packets_.empty() ? Clock::time_point::max() : packets_.front().arrives;
    }

  private:
    struct Packet {
        Clock::time_point arrives;
        std::string bytes;
    };

    int from_;
    int to_;
    Clock::duration time_;
    std::deque<Packet> packets_;
};

void carry(Direction& there, Direction& back) {
    for (;;) {
        std::array<pollfd, 3> watched{
            {{STDIN_FILENO, POLLIN, 0}, {there.source(), POLLIN, 0}, {back.source(), POLLIN, 0}}};
        const Clock::time_point next = std::min(there.next(), back.next());
        const auto left = std::max(next - Clock::now(), Clock::duration::zero());
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
        const timespec limit{.tv_sec = seconds.count(), .tv_nsec = (left - seconds).count()};
        const bool someOnTheirWay = next != Clock::time_point::max();
        mustSucceed(ppoll(watched.data(), watched.size(), someOnTheirWay ? &limit : nullptr, nullptr),
                    "ppoll");
        if (watched[0].revents != 0) {
            return;
        }
        there.take();
        back.take();
        there.deliver();
        back.deliver();
    }
}

void run(std::string_view milliseconds) {
    int roundTrip = 0;
    const auto [end, error] =
        std::from_chars(milliseconds.data(), milliseconds.data() + milliseconds.size(), roundTrip);
    if (error != std::errc() || end != milliseconds.data() + milliseconds.size() || roundTrip < 0) {
        throw std::invalid_argument("not a time: " + std::string(milliseconds));
    }
    // Otherwise the system wakes this process up to 50 microseconds late.
    prctl(PR_SET_TIMERSLACK, 1UL);
    const Network near("10.77.0.1");
    const Network far("10.77.0.2");
    const Clock::duration oneWay = std::chrono::milliseconds(roundTrip) / 2;
    Direction there(near, far, oneWay);
    Direction back(far, near, oneWay);
    std::cout << getpid() << ' ' << near.space.number() << ' ' << far.space.number() << std::endl;
    carry(there, back);
}
} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::cerr << "usage: bench_distant_link <time of a round trip in milliseconds>\n";
        return 2;
    }
    try {
        run(arguments[1]);
    } catch (const std::exception& error) {
        std::cerr << "bench_distant_link: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
