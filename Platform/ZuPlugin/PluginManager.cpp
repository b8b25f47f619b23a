#include "ZuPlugin/PluginManager.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Logging.h"
#include "ZuPlugin/ElfText.h"
#include "ZuPlugin/PluginEntry.h"
#include "wApi/wMutex.h"

#include <algorithm>
#include <dlfcn.h>
#include <filesystem>
#include <string_view>

namespace ZuPlugin
{

namespace
{

using AbiFunction = char const* (*)();
using CountFunction = uint64 (*)();
using AtFunction = wStatus (*)(uint64, std::shared_ptr<IPlugin>&);

/// Splits an ABI text into its fields.
std::vector<std::string_view> FieldsOf(std::string_view text)
{
    std::vector<std::string_view> fields;
    for (std::size_t start = 0; start <= text.size();)
    {
        std::size_t const end = std::min(text.find(", ", start), text.size());
        fields.push_back(text.substr(start, end - start));
        start = end + 2;
    }
    return fields;
}

/// Throws `Zu::Status::UNSUPPORTED_VERSION` and names the difference, unless the text equals this host's.
void CheckAbi(std::string const& theirs)
{
    if (theirs == ZU_PLUGIN_ABI_TEXT)
    {
        return;
    }
    auto const ours = FieldsOf(ZU_PLUGIN_ABI_TEXT);
    auto const given = FieldsOf(theirs);
    if (given.size() == ours.size())
    {
        auto const differing = std::ranges::mismatch(ours, given);
        ZU_THROW(Zu::Status::UNSUPPORTED_VERSION, "it was built for %s and not for %s",
                 std::string(*differing.in2).c_str(), std::string(*differing.in1).c_str());
    }
    ZU_THROW(Zu::Status::UNSUPPORTED_VERSION, "it was built for '%s' and not for '%s'", theirs.c_str(),
             ZU_PLUGIN_ABI_TEXT);
}

/// Throws unless the file is a plug-in library of this ABI. Only then may its code be loaded.
void CheckFile(std::string const& path)
{
    ElfText elf(path);
    for (char const* const name : {"ZuPlugin_Abi", "ZuPlugin_Count", "ZuPlugin_At"})
    {
        if (!elf.HasFunction(name))
        {
            ZU_THROW(Zu::Status::BAD_FORMAT, "it is no plug-in: it has no entry point %s", name);
        }
    }
    CheckAbi(elf.Text("ZuPlugin_AbiText"));
}

/// Loads a library that is never unloaded, because objects that it made may live anywhere.
void* Open(std::string const& path)
{
    // dlopen searches the system's folders for a name without a slash.
    std::string const absolute = std::filesystem::absolute(path).string();
    void* const handle = dlopen(absolute.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (handle == nullptr)
    {
        char const* const reason = dlerror();
        ZU_THROW(Zu::Status::BAD_FORMAT, "the system says: %s", reason != nullptr ? reason : "unknown error");
    }
    return handle;
}

template <typename Function>
Function EntryPoint(void* handle, char const* name)
{
    void* const symbol = dlsym(handle, name);
    if (symbol == nullptr)
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "it is no plug-in: it has no entry point %s", name);
    }
    return reinterpret_cast<Function>(symbol);
}

std::vector<std::shared_ptr<IPlugin>> MakePlugins(void* handle)
{
    char const* const abi = EntryPoint<AbiFunction>(handle, "ZuPlugin_Abi")();
    CheckAbi(abi != nullptr ? abi : "");
    uint64 const count = EntryPoint<CountFunction>(handle, "ZuPlugin_Count")();
    auto const at = EntryPoint<AtFunction>(handle, "ZuPlugin_At");
    std::vector<std::shared_ptr<IPlugin>> plugins;
    for (uint64 i = 0; i < count; ++i)
    {
        std::shared_ptr<IPlugin> plugin;
        wStatus const status = at(i, plugin);
        if (status != Zu::Status::SUCCESS || plugin == nullptr)
        {
            ZU_THROW(status != Zu::Status::SUCCESS ? status : Zu::Status::FAILURE,
                     "it does not give its plug-in number %llu of %llu (status %d)",
                     static_cast<unsigned long long>(i + 1), static_cast<unsigned long long>(count), status);
        }
        plugins.push_back(std::move(plugin));
    }
    return plugins;
}

} // namespace

PluginManager::PluginManager() = default;

PluginManager::~PluginManager() = default;

uint64 PluginManager::Count() const
{
    Zu::MutexLock const guard(lock);
    return libs.size();
}

PluginLib const& PluginManager::At(uint64 index) const
{
    Zu::MutexLock const guard(lock);
    if (index >= libs.size())
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "There is no plug-in library number %llu",
                 static_cast<unsigned long long>(index));
    }
    return *libs[index];
}

bool PluginManager::LoadFile(std::string const& path)
{
    return LoadFile(path, path);
}

bool PluginManager::LoadFile(std::string const& path, std::string const& source)
{
    Zu::MutexLock const loadGuard(loading);
    try
    {
        CheckFile(source);
        void* const handle = Open(source);
        if (IsLoaded(handle))
        {
            return true;
        }
        auto lib = std::make_unique<PluginLib>(path, MakePlugins(handle));
        Zu::MutexLock const guard(lock);
        handles.push_back(handle);
        libs.push_back(std::move(lib));
        return true;
    }
    catch (std::exception const& exception)
    {
        Refuse(path, exception.what());
    }
    catch (...)
    {
        Refuse(path, "it threw something that is no exception");
    }
    return false;
}

uint64 PluginManager::LoadFolder(std::string const& path)
{
    std::vector<std::string> files;
    try
    {
        for (auto const& entry : std::filesystem::directory_iterator(path))
        {
            if (entry.path().extension() == ".so")
            {
                files.push_back(entry.path().string());
            }
        }
    }
    catch (std::filesystem::filesystem_error const& exception)
    {
        Refuse(path, exception.code().message().c_str());
        return 0;
    }
    std::ranges::sort(files);
    return static_cast<uint64>(std::ranges::count_if(files, [this](auto const& file) { return LoadFile(file); }));
}

void PluginManager::Add(std::unique_ptr<PluginLib> lib)
{
    if (lib == nullptr)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "There is no plug-in library to add");
    }
    Zu::MutexLock const guard(lock);
    libs.push_back(std::move(lib));
}

std::vector<PluginManager::Refusal> PluginManager::Refusals() const
{
    Zu::MutexLock const guard(lock);
    return refusals;
}

bool PluginManager::IsLoaded(void const* handle) const
{
    Zu::MutexLock const guard(lock);
    return std::ranges::find(handles, handle) != handles.end();
}

void PluginManager::Refuse(std::string const& path, char const* reason)
{
    ZU_LOG_USER_ERROR("Plug-in %1$s was refused: %2$s", path.c_str(), reason);
    ZU_LOG_ERROR("Plug-in %s was refused: %s", path.c_str(), reason);
    std::string text = "Plug-in " + path + " was refused: " + reason;
    Zu::MutexLock const guard(lock);
    refusals.push_back({path, std::move(text)});
}

} // namespace ZuPlugin
