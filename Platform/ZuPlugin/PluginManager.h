#pragma once

#include "ZuPlugin/PluginLib.h"
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
/// A library that is not fit is refused before any of its code runs: it must be a whole shared object of this machine, offer
/// the entry points of PluginEntry.h and agree on the ABI. Any thread may call; libraries are loaded one at a time.
class ZUPLATFORM_API PluginManager
{
public:
    /// A library that was not taken in.
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

    /// The library at this place, in order of loading; it stays where it is. Throws -999 when there is none.
    PluginLib const& At(uint64 index) const;

    /// Loads one library; a file that is loaded already is not loaded again. False when it was refused: the reason is in the
    /// log and in `Refusals`.
    bool LoadFile(std::string const& path);

    /// Loads every "*.so" of a folder in the order of their names and gives how many are loaded now. A folder that cannot
    /// be read is refused as a file is.
    uint64 LoadFolder(std::string const& path);

    /// Takes in what is in the process already.
    void Add(std::unique_ptr<PluginLib> lib);

    std::vector<Refusal> Refusals() const;

private:
    bool IsLoaded(void const* handle) const;
    void Refuse(std::string const& path, char const* reason);

    Zu::RecursiveMutex loading; // held while a library loads; its code may ask the manager what is there

    mutable Zu::Mutex lock; // a leaf
    std::vector<std::unique_ptr<PluginLib>> libs ZU_GUARDED_BY(lock);
    std::vector<void const*> handles ZU_GUARDED_BY(lock); // of the files that are loaded
    std::vector<Refusal> refusals ZU_GUARDED_BY(lock);
};

} // namespace ZuPlugin
