#include "wApi/wAssembly.h"

#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <exception>
#include <string>
#include <vector>

struct wAssembly : wObject
{
    wAssembly(wAssembly** globalHandle, char const* assemblyName, wVersion const& ownVersion,
              wVersion const& builtAgainst);

    static void Destroy(wObject* object);

    wAssembly** const global;
    std::string const name;
    wVersion const version;
    wVersion const platformVersion;
    std::vector<wAssembly*> dependencies; // one reference is owned to each
    bool finalized = false;
};

namespace
{

constexpr wClass ASSEMBLY_CLASS{"wAssembly", nullptr, &wAssembly::Destroy};

} // namespace

wAssembly::wAssembly(wAssembly** globalHandle, char const* assemblyName, wVersion const& ownVersion,
                     wVersion const& builtAgainst)
    : wObject(ASSEMBLY_CLASS),
      global(globalHandle),
      name(assemblyName),
      version(ownVersion),
      platformVersion(builtAgainst)
{
}

void wAssembly::Destroy(wObject* object)
{
    auto* const assembly = static_cast<wAssembly*>(object);
    if (*assembly->global == assembly)
    {
        *assembly->global = nullptr;
    }
    while (!assembly->dependencies.empty())
    {
        xwAssembly_VRelease(assembly->dependencies.back());
        assembly->dependencies.pop_back();
    }
    delete assembly;
}

wStatus xwAssembly_ConstructInternal(wAssembly** local, wAssembly** global, char const* name, wVersion const& version,
                                     wVersion const& platformVersion)
{
    if (local == nullptr || global == nullptr || name == nullptr)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    Zu::MutexLock const guard(xwAssembly_Lock());
    if (*global != nullptr)
    {
        return Zu::Status::WRONG_STATE;
    }
    try
    {
        *local = *global = new wAssembly(global, name, version, platformVersion);
        return Zu::Status::SUCCESS;
    }
    catch (std::exception const&)
    {
        return Zu::Status::FAILURE;
    }
}

wStatus xwAssembly_AddDependency(wAssembly* assembly, wAssemblyConstructor construct)
{
    if (assembly == nullptr || construct == nullptr)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    Zu::MutexLock const guard(xwAssembly_Lock());
    if (assembly->finalized)
    {
        return Zu::Status::WRONG_STATE;
    }
    try
    {
        assembly->dependencies.push_back(nullptr); // reserve first: nothing can fail after the call
    }
    catch (std::exception const&)
    {
        return Zu::Status::FAILURE;
    }
    wStatus const status = construct(&assembly->dependencies.back());
    if (status != Zu::Status::SUCCESS)
    {
        assembly->dependencies.pop_back();
    }
    return status;
}

wStatus xwAssembly_Finalize(wAssembly* assembly)
{
    if (assembly == nullptr)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    Zu::MutexLock const guard(xwAssembly_Lock());
    if (assembly->finalized)
    {
        return Zu::Status::WRONG_STATE;
    }
    assembly->finalized = true;
    return Zu::Status::SUCCESS;
}

bool xwAssembly_Share(wAssembly** assembly, wAssembly** global)
{
    Zu::MutexLock const guard(xwAssembly_Lock());
    if (*global == nullptr)
    {
        return false;
    }
    wObject_Share(*global);
    *assembly = *global;
    return true;
}

wStatus xwAssembly_VRelease(wAssembly* assembly)
{
    // Under the lock no thread can share the assembly between its last release and its destruction.
    Zu::MutexLock const guard(xwAssembly_Lock());
    wObject_Release(assembly);
    return Zu::Status::SUCCESS;
}

char const* xwAssembly_Name(wAssembly const* assembly)
{
    return assembly->name.c_str();
}

wVersion const& xwAssembly_Version(wAssembly const* assembly)
{
    return assembly->version;
}

wVersion const& xwAssembly_PlatformVersion(wAssembly const* assembly)
{
    return assembly->platformVersion;
}

uint64 xwAssembly_DependencyCount(wAssembly const* assembly)
{
    Zu::MutexLock const guard(xwAssembly_Lock());
    return assembly->dependencies.size();
}

Zu::RecursiveMutex& xwAssembly_Lock()
{
    // Never destroyed: statics of other libraries may release assemblies later.
    static auto* const lock = new Zu::RecursiveMutex;
    return *lock;
}

wStatus xwAssembly_BringUp(wAssembly** assembly, wAssembly** global, char const* name,
                           std::span<wAssemblyConstructor const> dependencies)
{
    if (assembly == nullptr || global == nullptr)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    Zu::MutexLock const guard(xwAssembly_Lock());
    if (xwAssembly_Share(assembly, global))
    {
        return Zu::Status::SUCCESS;
    }
    constexpr wVersion FIRST_VERSION{1, 0, 0, 0};
    wAssembly* made = nullptr;
    wStatus status = xwAssembly_ConstructInternal(&made, global, name, FIRST_VERSION, FIRST_VERSION);
    for (auto const construct : dependencies)
    {
        status = status == Zu::Status::SUCCESS ? xwAssembly_AddDependency(made, construct) : status;
    }
    status = status == Zu::Status::SUCCESS ? xwAssembly_Finalize(made) : status;
    if (status != Zu::Status::SUCCESS)
    {
        xwAssembly_VRelease(made);
        return status;
    }
    *assembly = made;
    return Zu::Status::SUCCESS;
}
