#pragma once

#include "ZuPlugin/IPlugin.h"
#include "ZuPlugin/PluginAbi.h"
#include "wApi/wExport.h"
#include "wApi/wStatus.h"
#include "wApi/wTypes.h"

#include <iterator>
#include <memory>

/// The entry points of a plug-in library. Its author writes no more than `ZU_PLUGIN_ENTRY(MakeMine);`.
///
/// The text is data, not code, so that the loader can read it from the file before it runs anything of the library; it must
/// say the same as `ZuPlugin_Abi()`.
extern "C"
{
    __attribute__((visibility("default"))) extern char const ZuPlugin_AbiText[sizeof(ZU_PLUGIN_ABI_TEXT)];
    __attribute__((visibility("default"))) char const* ZuPlugin_Abi();

    /// How many plug-ins the library offers.
    __attribute__((visibility("default"))) uint64 ZuPlugin_Count();

    /// Makes the plug-in of this number: 1, or -999 when there is none. May throw what making it throws.
    __attribute__((visibility("default"))) wStatus ZuPlugin_At(uint64 index,
                                                               std::shared_ptr<ZuPlugin::IPlugin>& plugin);
}

namespace ZuPlugin
{

using PluginMaker = std::shared_ptr<IPlugin> (*)();

/// `Make` as the entry points call it, whatever kind of plug-in it makes.
template <auto Make>
std::shared_ptr<IPlugin> MakePlugin()
{
    return Make();
}

} // namespace ZuPlugin

/// Stands once in a plug-in library, outside of any namespace: the library offers what these functions, without arguments,
/// make, in this order. Each gives a shared pointer to a class derived from ZuPlugin::IPlugin.
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
