#include "tests/transport/resolver.h"

#include <dlfcn.h>
#include <netdb.h>
#include <string_view>

namespace {
using Resolve = int(const char*, const char*, const addrinfo*, addrinfo**);

int systemResolve(const char* node, const char* service, const addrinfo* hints, addrinfo** result) {
    static auto* const resolve = reinterpret_cast<Resolve*>(::dlsym(RTLD_NEXT, "getaddrinfo"));
    return resolve(node, service, hints, result);
}

int resolveBoth(const char* service, const addrinfo* hints, addrinfo** result) {
    if (const int problem = systemResolve("::1", service, hints, result); problem != 0) {
        return problem;
    }
    addrinfo* last = *result;
    while (last->ai_next != nullptr) {
        last = last->ai_next;
    }
    return systemResolve("127.0.0.1", service, hints, &last->ai_next);
}

bool isHere(std::string_view name) {
    if (name.ends_with('.')) {
        name.remove_suffix(1);
    }
    return name.ends_with(support::kDomainHere);
}
} // namespace

extern "C" int getaddrinfo(const char* node, const char* service, const addrinfo* hints, addrinfo** result) {
    const std::string_view name = node == nullptr ? "" : node;
    if (name == support::kUnknownName) {
        return EAI_NONAME;
    }
    if (name == support::kUnansweredName) {
        return EAI_AGAIN;
    }
    if (name == support::kNameWithTwoAddresses) {
        return resolveBoth(service, hints, result);
    }
    return systemResolve(isHere(name) ? "127.0.0.1" : node, service, hints, result);
}
