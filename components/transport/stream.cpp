#include "components/transport/stream.h"

#include "platform/own_library.h"

namespace transport {

namespace {
template <class Kind>
using Maker = Kind* (*)();

Maker<ClearStream> makerOfClearStreams() {
    static const auto make =
        platform::functionIn<Maker<ClearStream>>("libbrindlewake_network.so", "brindlewakeMakeTcpStream");
    return make;
}

Maker<TlsStream> makerOfTlsStreams() {
    static const auto make =
        platform::functionIn<Maker<TlsStream>>("libbrindlewake_tls.so", "brindlewakeMakeTlsStream");
    return make;
}

template <class Kind>
std::unique_ptr<Kind> madeBy(Maker<Kind> make) {
    return std::unique_ptr<Kind>(make == nullptr ? nullptr : make());
}
} // namespace

std::unique_ptr<ClearStream> makeClearStream() {
    return madeBy(makerOfClearStreams());
}

std::unique_ptr<TlsStream> makeTlsStream() {
    return madeBy(makerOfTlsStreams());
}

QString tlsLibraryVersion() {
    QString version;
    const auto write =
        platform::functionIn<void (*)(QString&)>("libbrindlewake_tls.so", "brindlewakeTlsLibraryVersion");
    if (write != nullptr) {
        write(version);
    }
    return version;
}

void loadNetwork() {
    makerOfClearStreams();
}

} // namespace transport
