#pragma once

#include <nlohmann/json.hpp> // the whole header: older versions define their version number only there

// The properties in which host and plug-ins must agree, because objects of the standard library and of the JSON library
// cross between them. The text has fields "name value", separated by ", ". The compiler is not among them. Raise
// `ZU_PLUGIN_ABI_NUMBER` when a class that plug-ins use changes.

#define ZU_PLUGIN_ABI_QUOTE_(text) #text
#define ZU_PLUGIN_ABI_QUOTE(text) ZU_PLUGIN_ABI_QUOTE_(text)

#if defined(_LIBCPP_VERSION)
#define ZU_PLUGIN_ABI_LIBRARY "libc++ ABI " ZU_PLUGIN_ABI_QUOTE(_LIBCPP_ABI_VERSION)
#elif defined(__GLIBCXX__) && _GLIBCXX_USE_CXX11_ABI
#define ZU_PLUGIN_ABI_LIBRARY "libstdc++ C++11 strings"
#elif defined(__GLIBCXX__)
#define ZU_PLUGIN_ABI_LIBRARY "libstdc++ old strings"
#else
#error "A standard library that the plug-in ABI does not know"
#endif

#define ZU_PLUGIN_ABI_JSON                                                                                             \
    ZU_PLUGIN_ABI_QUOTE(NLOHMANN_JSON_VERSION_MAJOR)                                                                   \
    "." ZU_PLUGIN_ABI_QUOTE(NLOHMANN_JSON_VERSION_MINOR) "." ZU_PLUGIN_ABI_QUOTE(NLOHMANN_JSON_VERSION_PATCH)

#define ZU_PLUGIN_ABI_NUMBER "2"

/// The ABI text of the code that is being compiled.
#define ZU_PLUGIN_ABI_TEXT                                                                                             \
    "ZuPlugin ABI " ZU_PLUGIN_ABI_NUMBER ", standard library " ZU_PLUGIN_ABI_LIBRARY                                   \
    ", JSON library " ZU_PLUGIN_ABI_JSON
