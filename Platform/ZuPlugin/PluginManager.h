#pragma once

#include "ZuPlugin/IPlugin.h"
#include "wApi/wExport.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <memory>
#include <string>
#include <vector>

namespace ZuPlugin
{

/// Loads plug-in libraries and keeps them.
///
/// An unsuitable library is refused before any of its code runs. It must be a complete shared object for this machine,
/// define the entry points of PluginEntry.h and have the same ABI text. Any thread may call; only one library loads at
/// a time.
class ZUPLATFORM_API PluginManager
{
public:
    /// A library that was refused.
    struct Refusal
    {
        std::string path;
        std::string reason; ///< a sentence that names the file
    };

    PluginManager();
    ~PluginManager();

    PluginManager(PluginManager const&) = delete;
    PluginManager& operator=(PluginManager const&) = delete;

    uint64 Count() const;

    /// Returns the library with this index in order of loading; valid as long as the manager. Throws
    /// `Zu::Status::NOT_FOUND` if there is none.
    PluginLib const& At(uint64 index) const;

    /// Loads one library. Returns true also for a file that is loaded already, and does not load it again. Returns
    /// false if the library is refused; the reason is in the log and in `Refusals()`.
    bool LoadFile(std::string const& path);

    /// As above, from the bytes at `source`, another path of the same library: a checked copy. Texts name `path`.
    bool LoadFile(std::string const& path, std::string const& source);

    /// Loads every "*.so" file of a folder in order of name. Returns how many of them are loaded now. An unreadable
    /// folder is reported as a refusal and gives 0.
    uint64 LoadFolder(std::string const& path);

    /// Adds a library from code that is in the process already. Throws `Zu::Status::BAD_ARGUMENT` for null.
    void Add(std::unique_ptr<PluginLib> lib);

    std::vector<Refusal> Refusals() const;

private:
    bool IsLoaded(void const* handle) const;
    void Refuse(std::string const& path, char const* reason);

    Zu::RecursiveMutex loading; // held while a library loads; recursive because its code may call the manager

    mutable Zu::Mutex lock; // a leaf: no other lock is taken under it
    std::vector<std::unique_ptr<PluginLib>> libs ZU_GUARDED_BY(lock);
    std::vector<void const*> handles ZU_GUARDED_BY(lock); // of the loaded files
    std::vector<Refusal> refusals ZU_GUARDED_BY(lock);
};

} // namespace ZuPlugin
