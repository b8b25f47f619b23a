#pragma once

#include "ZuControl/Export.h"
#include "wApi/wAssembly.h"
#include "wApi/wStatus.h"

extern "C"
{
    /// Version of the library as the platform's plug-in loader reads it.
    ZUCONTROL_API char const* wPlugin_AssemblyVersion();

    /// The loader's way to the assembly: ZuCnLib_Construct under the name that it looks for.
    ZUCONTROL_API wStatus wPlugin_ConstructAssembly(wAssembly** assembly);

    /// Builds the library's assembly with everything that it depends on, and on a later call gives the same one with one more
    /// reference. A failing step releases what was built and its status is given.
    ZUCONTROL_API wStatus ZuCnLib_Construct(wAssembly** assembly);
}
