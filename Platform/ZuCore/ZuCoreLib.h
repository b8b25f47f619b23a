#pragma once

#include "wApi/wAssembly.h"
#include "wApi/wExport.h"

/// Brings the library of running state and results up. See wAssemblyConstructor.
ZUPLATFORM_API wStatus ZuCoreLib_Construct(wAssembly** assembly);
