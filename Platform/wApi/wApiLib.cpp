#include "wApi/wApiLib.h"

namespace
{

wAssembly* theAssembly = nullptr; // under the lock of all assemblies

} // namespace

wStatus wApiLib_Construct(wAssembly** assembly)
{
    return xwAssembly_BringUp(assembly, &theAssembly, "wApiLib", {});
}
