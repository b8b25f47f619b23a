#pragma once

#include "wApi/wAssembly.h"
#include "wApi/wExport.h"

/// Brings the library of persistence, problems and metrics up. See wAssemblyConstructor.
ZUPLATFORM_API wStatus ZcLib_Construct(wAssembly** assembly);
