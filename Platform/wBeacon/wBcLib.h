#pragma once

#include "wApi/wAssembly.h"

/// Brings the library of messages and stamps up. See wAssemblyConstructor.
ZUAPI_API wStatus wBcLib_Construct(wAssembly** assembly);
