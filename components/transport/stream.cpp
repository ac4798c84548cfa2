#include "components/transport/stream.h"

#include "platform/own_library.h"

namespace transport {

namespace {
using MakeTcpStream = Stream* (*)();

MakeTcpStream loadedMaker() {
    static const auto make =
        platform::functionIn<MakeTcpStream>("libbrindlewake_network.so", "brindlewakeMakeTcpStream");
    return make;
}
} // namespace

std::unique_ptr<Stream> makeStream() {
    const MakeTcpStream make = loadedMaker();
    return std::unique_ptr<Stream>(make == nullptr ? nullptr : make());
}

void loadNetwork() {
    loadedMaker();
}

} // namespace transport
