#include "wApi/wApiLib.h"

namespace
{

wAssembly* theAssembly = nullptr; // guarded by `xwAssembly_Lock()`

} // namespace

wStatus wApiLib_Construct(wAssembly** assembly)
{
    return xwAssembly_BringUp(assembly, &theAssembly, "wApiLib", {});
}
