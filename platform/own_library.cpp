#include "platform/own_library.h"

#include <dlfcn.h>

namespace platform {

void* symbolIn(const char* library, const char* function) {
    // The library is never unloaded, because objects that it made may live until the program ends.
    void* const handle = dlopen(library, RTLD_NOW | RTLD_NODELETE);
    return handle == nullptr ? nullptr : dlsym(handle, function);
}

} // namespace platform
