#include "ZuControl/Control/ZuCnLib.h"

#include "ZuCommon/ZcLib.h"
#include "ZuCore/ZuCoreLib.h"
#include "wApi/wApiLib.h"
#include "wBeacon/wBcLib.h"

namespace
{

wAssembly* processAssembly = nullptr; // null until the library is up, and again when the last reference went

}

char const* wPlugin_AssemblyVersion()
{
    return "1.0.0.0";
}

wStatus wPlugin_ConstructAssembly(wAssembly** assembly)
{
    return ZuCnLib_Construct(assembly);
}

wStatus ZuCnLib_Construct(wAssembly** assembly)
{
    static constexpr wAssemblyConstructor DEPENDENCIES[] = {wApiLib_Construct, wBcLib_Construct, ZcLib_Construct,
                                                            ZuCoreLib_Construct};
    return xwAssembly_BringUp(assembly, &processAssembly, "ZuCnLib", DEPENDENCIES);
}
