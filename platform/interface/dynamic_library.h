// Libraries that are bound while the program runs.
//
// A library is named by a path, or by a name without folders, which the host looks for as it looks
// for all of its libraries. What is loaded stays loaded until the process ends: libraries may have
// started things that do not survive their going.
//
// A failure prints nothing. The host's own text for it is kept, for whoever wants to know more.
#pragma once

namespace platform {

// Null is no library.
using DynamicLibrary = void*;
// To be cast to the function's true type before it is called.
using DynamicFunction = void (*)();

// Loads a library with all that it needs itself. Null if there is none, or it does not fit this
// host.
DynamicLibrary loadDynamicLibrary(const char* name);

// A function that the library offers, or null if it has none of that name.
DynamicFunction findDynamicFunction(DynamicLibrary library, const char* name);

// The host's text for the last failure of the two; empty if there was none. It lives until the
// next failure.
const char* dynamicLibraryFailure();

} // namespace platform
