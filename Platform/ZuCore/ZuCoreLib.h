#pragma once

#include "wApi/wAssembly.h"
#include "wApi/wExport.h"

/// Brings up the library of run state and results. See `wAssemblyConstructor`.
ZUPLATFORM_API wStatus ZuCoreLib_Construct(wAssembly** assembly);
