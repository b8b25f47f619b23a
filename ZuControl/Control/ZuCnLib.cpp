#include "ZuControl/Control/ZuCnLib.h"

#include "ZuCommon/ZcLib.h"
#include "ZuCore/ZuCoreLib.h"
#include "wApi/wApiLib.h"
#include "wApi/wObject.h"
#include "wApi/wVersion.h"
#include "wBeacon/wBcLib.h"

namespace
{

using Zu::Status::SUCCESS;

constexpr char const* ASSEMBLY_VERSION = "1.0.0.0";
constexpr char const* PLATFORM_VERSION = "1.0.0.0"; // of the platform that the assembly was built against

constexpr wAssemblyConstructor DEPENDENCIES[] = {wApiLib_Construct, wBcLib_Construct, ZcLib_Construct,
                                                 ZuCoreLib_Construct};

wAssembly* processAssembly = nullptr; // the platform sets it, and clears it with the last reference

wStatus Complete(wAssembly* assembly)
{
    for (auto const construct : DEPENDENCIES)
    {
        if (wStatus const status = xwAssembly_AddDependency(assembly, construct); status != SUCCESS)
        {
            return status;
        }
    }
    return xwAssembly_Finalize(assembly);
}

/// Stores the complete assembly in `made`, with one reference. Releases all parts when a step fails.
wStatus Build(wAssembly*& made)
{
    wVersion version;
    wVersion platformVersion;
    if (wStatus const status = wVersion_Parse(&version, ASSEMBLY_VERSION); status != SUCCESS)
    {
        return status;
    }
    if (wStatus const status = wVersion_Parse(&platformVersion, PLATFORM_VERSION); status != SUCCESS)
    {
        return status;
    }
    wAssembly* assembly = nullptr;
    wStatus status = xwAssembly_ConstructInternal(&assembly, &processAssembly, "ZuCnLib", version, platformVersion);
    if (status != SUCCESS)
    {
        return status;
    }
    status = Complete(assembly);
    if (status != SUCCESS)
    {
        xwAssembly_VRelease(assembly);
        return status;
    }
    made = assembly;
    return SUCCESS;
}

} // namespace

char const* wPlugin_AssemblyVersion()
{
    return ASSEMBLY_VERSION;
}

wStatus wPlugin_ConstructAssembly(wAssembly** assembly)
{
    return ZuCnLib_Construct(assembly);
}

wStatus ZuCnLib_Construct(wAssembly** assembly)
{
    if (assembly == nullptr)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    if (processAssembly != nullptr)
    {
        wObject_Share(processAssembly);
        *assembly = processAssembly;
        return SUCCESS;
    }
    return Build(*assembly);
}
