#pragma once

#include "wApi/wAssembly.h"

/// Brings up the library of messages and stamps. See `wAssemblyConstructor`.
ZUAPI_API wStatus wBcLib_Construct(wAssembly** assembly);
