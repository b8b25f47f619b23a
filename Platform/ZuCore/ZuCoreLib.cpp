#include "ZuCore/ZuCoreLib.h"

#include "ZuCommon/ZcLib.h"
#include "wApi/wApiLib.h"
#include "wBeacon/wBcLib.h"

namespace
{

wAssembly* theAssembly = nullptr; // guarded by `xwAssembly_Lock()`

} // namespace

wStatus ZuCoreLib_Construct(wAssembly** assembly)
{
    constexpr wAssemblyConstructor DEPENDENCIES[] = {&wApiLib_Construct, &wBcLib_Construct, &ZcLib_Construct};
    return xwAssembly_BringUp(assembly, &theAssembly, "ZuCoreLib", DEPENDENCIES);
}
