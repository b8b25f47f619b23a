#pragma once

#include "wApi/wExport.h"
#include "wApi/wMutex.h"
#include "wApi/wObject.h"
#include "wApi/wTypes.h"
#include "wApi/wVersion.h"

#include <span>

/// A library that has been brought up in this process: its name, its versions and the libraries that it depends on.
///
/// Each library has one assembly, behind a process-wide handle, and a constructor function. The function makes the
/// assembly, or shares the assembly that the handle refers to. An assembly is a counted object. The release of the last
/// reference releases its dependencies and sets the handle to null.
struct wAssembly;

/// Brings up a library. On success stores a reference to its assembly in `*assembly`; otherwise returns a failing
/// status and stores no reference.
using wAssemblyConstructor = wStatus (*)(wAssembly** assembly);

/// Makes an assembly with one reference and stores it in `*local` and in `*global`, the process-wide handle. `*global`
/// must outlive the assembly. Returns `Zu::Status::BAD_ARGUMENT` for null and `Zu::Status::WRONG_STATE` if the handle
/// is set.
ZUAPI_API wStatus xwAssembly_ConstructInternal(wAssembly** local, wAssembly** global, char const* name,
                                               wVersion const& version, wVersion const& platformVersion);

/// Calls `construct` and keeps the reference that it stores. Returns the status of `construct`. Returns
/// `Zu::Status::WRONG_STATE` for a finalised assembly and `Zu::Status::BAD_ARGUMENT` for null.
ZUAPI_API wStatus xwAssembly_AddDependency(wAssembly* assembly, wAssemblyConstructor construct);

/// Marks the assembly as complete. Returns `Zu::Status::WRONG_STATE` the second time and `Zu::Status::BAD_ARGUMENT` for
/// null.
ZUAPI_API wStatus xwAssembly_Finalize(wAssembly* assembly);

/// Adds a reference to the assembly behind a process-wide handle and stores the assembly in `*assembly`. Returns false
/// and stores nothing if the handle is null.
ZUAPI_API bool xwAssembly_Share(wAssembly** assembly, wAssembly** global);

/// Releases one reference. The last release sets the handle to null and releases the dependencies in reverse order.
/// Does nothing for null. Always returns `Zu::Status::SUCCESS`.
ZUAPI_API wStatus xwAssembly_VRelease(wAssembly* assembly);

ZUAPI_API char const* xwAssembly_Name(wAssembly const* assembly);
ZUAPI_API wVersion const& xwAssembly_Version(wAssembly const* assembly);

/// The version of the platform that the library was built against.
ZUAPI_API wVersion const& xwAssembly_PlatformVersion(wAssembly const* assembly);

ZUAPI_API uint64 xwAssembly_DependencyCount(wAssembly const* assembly);

/// The lock that is held while a library is brought up, so that two concurrent first calls of a constructor function
/// make one assembly. All libraries share the lock. It is recursive because one constructor function calls another on
/// the same thread.
ZUAPI_API Zu::RecursiveMutex& xwAssembly_Lock();

/// The complete body of a constructor function: shares the assembly behind `*global`, or makes an assembly of this
/// name, of version 1.0.0.0 and with these dependencies in order. A failure leaves nothing behind.
ZUAPI_API wStatus xwAssembly_BringUp(wAssembly** assembly, wAssembly** global, char const* name,
                                     std::span<wAssemblyConstructor const> dependencies);
