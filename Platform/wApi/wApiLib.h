#pragma once

#include "wApi/wAssembly.h"

/// Brings up the library of locks, threads and containers. See `wAssemblyConstructor`.
ZUAPI_API wStatus wApiLib_Construct(wAssembly** assembly);
