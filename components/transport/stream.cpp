#include "components/transport/stream.h"

#include <dlfcn.h>

namespace transport {

namespace {
using MakeTcpStream = Stream* (*)();

MakeTcpStream loadNetwork() {
    // Found by the path that is built into the program. It stays loaded: its streams live as long as they
    // like.
    void* const library = dlopen("libbrindlewake_network.so", RTLD_NOW | RTLD_NODELETE);
    if (library == nullptr) {
        return nullptr;
    }
    return reinterpret_cast<MakeTcpStream>(dlsym(library, "brindlewakeMakeTcpStream"));
}
} // namespace

std::unique_ptr<Stream> makeStream() {
    static const MakeTcpStream make = loadNetwork();
    return std::unique_ptr<Stream>(make == nullptr ? nullptr : make());
}

} // namespace transport
