#include "platform/own_library.h"

#include <dlfcn.h>

namespace platform {

void* symbolIn(const char* library, const char* function) {
    // Never unloaded: what its functions made lives as long as it likes.
    void* const handle = dlopen(library, RTLD_NOW | RTLD_NODELETE);
    return handle == nullptr ? nullptr : dlsym(handle, function);
}

} // namespace platform
