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

    /// Builds the library's assembly with everything that it depends on. A later call gives the same one with one more
    /// reference. When a step fails, what was built is released and the status of that step is given; `*assembly` is then
    /// left alone. Not protected against two first calls at once, nor against the release of the last reference meanwhile.
    ZUCONTROL_API wStatus ZuCnLib_Construct(wAssembly** assembly);
}
