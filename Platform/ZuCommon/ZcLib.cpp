#include "ZuCommon/ZcLib.h"

#include "wApi/wApiLib.h"
#include "wBeacon/wBcLib.h"

namespace
{

wAssembly* theAssembly = nullptr; // guarded by `xwAssembly_Lock()`

} // namespace

wStatus ZcLib_Construct(wAssembly** assembly)
{
    constexpr wAssemblyConstructor DEPENDENCIES[] = {&wApiLib_Construct, &wBcLib_Construct};
    return xwAssembly_BringUp(assembly, &theAssembly, "ZcLib", DEPENDENCIES);
}
