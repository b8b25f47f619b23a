#pragma once

#include "wApi/wExport.h"
#include "wApi/wMutex.h"
#include "wApi/wObject.h"
#include "wApi/wTypes.h"
#include "wApi/wVersion.h"

#include <span>

/// A library that has been brought up in this process: its name, its versions and the libraries that it stands on.
///
/// Each library has one, behind a process-wide handle, and a constructor function that makes it or shares the one that is
/// there. It is a counted object; the last reference that is given back releases its dependencies and clears the handle.
struct wAssembly;

/// Brings a library up: gives a reference to its assembly, or a failing status and no reference.
using wAssemblyConstructor = wStatus (*)(wAssembly** assembly);

/// Makes an assembly with one reference and stores it in `*local` and in `*global`, the process-wide handle, which outlives
/// it. -997 for null; -1000 for a handle that is set.
ZUAPI_API wStatus xwAssembly_ConstructInternal(wAssembly** local, wAssembly** global, char const* name,
                                               wVersion const& version, wVersion const& platformVersion);

/// Calls `construct` and keeps the reference that it gives. What it fails with is passed on. -1000 once finalised.
ZUAPI_API wStatus xwAssembly_AddDependency(wAssembly* assembly, wAssemblyConstructor construct);

/// The assembly is complete. -1000 the second time.
ZUAPI_API wStatus xwAssembly_Finalize(wAssembly* assembly);

/// One more reference to the assembly behind a process-wide handle, stored in `*assembly`; false, and nothing stored, when
/// there is none.
ZUAPI_API bool xwAssembly_Share(wAssembly** assembly, wAssembly** global);

/// One reference less. With the last one the handle is null again and the dependencies are released, the latest first. Null:
/// nothing happens.
ZUAPI_API wStatus xwAssembly_VRelease(wAssembly* assembly);

ZUAPI_API char const* xwAssembly_Name(wAssembly const* assembly);
ZUAPI_API wVersion const& xwAssembly_Version(wAssembly const* assembly);

/// The version of the platform that the library was built against.
ZUAPI_API wVersion const& xwAssembly_PlatformVersion(wAssembly const* assembly);

ZUAPI_API uint64 xwAssembly_DependencyCount(wAssembly const* assembly);

/// Held while a library is brought up, so that two first calls of its constructor function make one assembly. All libraries
/// share it, for one brings up the next on the same thread.
ZUAPI_API Zu::RecursiveMutex& xwAssembly_Lock();

/// The whole of a constructor function: shares what is there, else makes the assembly of this name, of version 1.0.0.0,
/// with these dependencies in order. A failure leaves nothing behind.
ZUAPI_API wStatus xwAssembly_BringUp(wAssembly** assembly, wAssembly** global, char const* name,
                                     std::span<wAssemblyConstructor const> dependencies);
