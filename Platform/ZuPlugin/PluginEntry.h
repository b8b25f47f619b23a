#pragma once

#include "ZuPlugin/IPlugin.h"
#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <iterator>
#include <memory>
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

#define ZU_PLUGIN_ABI_NUMBER "4"

/// The ABI text of the code that is being compiled.
#define ZU_PLUGIN_ABI_TEXT                                                                                             \
    "ZuPlugin ABI " ZU_PLUGIN_ABI_NUMBER ", standard library " ZU_PLUGIN_ABI_LIBRARY                                   \
    ", JSON library " ZU_PLUGIN_ABI_JSON

/// The entry points of a plug-in library. A plug-in author only writes `ZU_PLUGIN_ENTRY(MakeMine);`.
///
/// `ZuPlugin_AbiText` is data, so that the loader can read it from the file before it runs any code of the library. It
/// must equal the result of `ZuPlugin_Abi()`.
extern "C"
{
    __attribute__((visibility("default"))) extern char const ZuPlugin_AbiText[sizeof(ZU_PLUGIN_ABI_TEXT)];
    __attribute__((visibility("default"))) char const* ZuPlugin_Abi();

    /// Returns the number of plug-ins that the library offers.
    __attribute__((visibility("default"))) uint64 ZuPlugin_Count();

    /// Makes the plug-in with this number and stores it in `plugin`. Returns `Zu::Status::NOT_FOUND` if there is none.
    /// Passes on an exception of the function that makes it.
    __attribute__((visibility("default"))) wStatus ZuPlugin_At(uint64 index,
                                                               std::shared_ptr<ZuPlugin::IPlugin>& plugin);
}

namespace ZuPlugin
{

using PluginMaker = std::shared_ptr<IPlugin> (*)();

/// Calls `Make` and converts its result to the type that the entry points need.
template <auto Make>
std::shared_ptr<IPlugin> MakePlugin()
{
    return Make();
}

} // namespace ZuPlugin

/// Defines the entry points; a plug-in library uses it once, outside of any namespace. The arguments are functions
/// without parameters. Each returns a shared pointer to a class derived from `ZuPlugin::IPlugin`. The library offers
/// their results in this order.
#define ZU_PLUGIN_ENTRY(...)                                                                                           \
    char const ZuPlugin_AbiText[sizeof(ZU_PLUGIN_ABI_TEXT)] = ZU_PLUGIN_ABI_TEXT;                                      \
    char const* ZuPlugin_Abi()                                                                                         \
    {                                                                                                                  \
        return ZuPlugin_AbiText;                                                                                       \
    }                                                                                                                  \
    namespace                                                                                                          \
    {                                                                                                                  \
    template <auto... Make>                                                                                            \
    struct ZuPluginMakers                                                                                              \
    {                                                                                                                  \
        static constexpr ::ZuPlugin::PluginMaker ALL[] = {&::ZuPlugin::MakePlugin<Make>...};                           \
    };                                                                                                                 \
    using ZuOfferedPlugins = ZuPluginMakers<__VA_ARGS__>;                                                              \
    }                                                                                                                  \
    uint64 ZuPlugin_Count()                                                                                            \
    {                                                                                                                  \
        return ::std::size(ZuOfferedPlugins::ALL);                                                                     \
    }                                                                                                                  \
    wStatus ZuPlugin_At(uint64 index, ::std::shared_ptr<::ZuPlugin::IPlugin>& plugin)                                  \
    {                                                                                                                  \
        if (index >= ::std::size(ZuOfferedPlugins::ALL))                                                               \
        {                                                                                                              \
            return ::Zu::Status::NOT_FOUND;                                                                            \
        }                                                                                                              \
        plugin = ZuOfferedPlugins::ALL[index]();                                                                       \
        return ::Zu::Status::SUCCESS;                                                                                  \
    }                                                                                                                  \
    static_assert(true)
