#pragma once

namespace platform {

/**
 * The address of a function in one of the program's own libraries, which is loaded at the first call and
 * stays loaded. The library is found by the path that is built into the program. nullptr when the library
 * cannot be loaded or has no such function.
 */
void* symbolIn(const char* library, const char* function);

/** The same as a function of the given type, which has to be the type that it was defined with. */
template <class Function>
Function functionIn(const char* library, const char* function) {
    return reinterpret_cast<Function>(symbolIn(library, function));
}

} // namespace platform
