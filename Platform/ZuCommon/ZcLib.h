#pragma once

#include "wApi/wAssembly.h"
#include "wApi/wExport.h"

/// Brings up the library of persistence, problems and metrics. See `wAssemblyConstructor`.
ZUPLATFORM_API wStatus ZcLib_Construct(wAssembly** assembly);
