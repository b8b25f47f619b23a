#include "wBeacon/wBcLib.h"

#include "wApi/wApiLib.h"

namespace
{

wAssembly* theAssembly = nullptr; // guarded by `xwAssembly_Lock()`

} // namespace

wStatus wBcLib_Construct(wAssembly** assembly)
{
    constexpr wAssemblyConstructor DEPENDENCIES[] = {&wApiLib_Construct};
    return xwAssembly_BringUp(assembly, &theAssembly, "wBcLib", DEPENDENCIES);
}
