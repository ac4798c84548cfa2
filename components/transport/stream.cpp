#include "components/transport/stream.h"

#include "platform/own_library.h"

namespace transport {

std::unique_ptr<Stream> makeStream() {
    using MakeTcpStream = Stream* (*)();
    static const auto make =
        platform::functionIn<MakeTcpStream>("libbrindlewake_network.so", "brindlewakeMakeTcpStream");
    return std::unique_ptr<Stream>(make == nullptr ? nullptr : make());
}

} // namespace transport
