#pragma once

#include "wApi/wAssembly.h"

/// Brings the library of locks, threads and containers up. See wAssemblyConstructor.
ZUAPI_API wStatus wApiLib_Construct(wAssembly** assembly);
