#pragma once

#include "ZuControl/Export.h"
#include "wApi/wAssembly.h"
#include "wApi/wTypes.h"

extern "C"
{
    /// Version of the library as the platform's plug-in loader reads it.
    ZUCONTROL_API char const* wPlugin_AssemblyVersion();

    /// ZuCnLib_Construct under the name that the platform's loader looks up.
    ZUCONTROL_API wStatus wPlugin_ConstructAssembly(wAssembly** assembly);

    /// Builds the library's assembly with all its dependencies. A later call gives the same assembly with one more
    /// reference. When a step fails, the parts that are built by then are released, the status of the step is returned,
    /// and `*assembly` is unchanged. Two first calls must not run beside each other, nor a call beside the release of
    /// the last reference.
    ZUCONTROL_API wStatus ZuCnLib_Construct(wAssembly** assembly);
}
