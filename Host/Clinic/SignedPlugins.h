#pragma once

#include "Host/Clinic/PluginKeys.h"
#include "Host/Clinic/SealedFile.h"

#include <filesystem>
#include <map>
#include <memory>
#include <string>

namespace ZuHost
{

/// Admits the plug-ins that a known key has signed.
///
/// The signature of "x.so" is the file "x.so.sig" of 64 bytes. The host loads the very bytes that were checked, from
/// memory: to change the file afterwards has no effect. One thread at a time.
class SignedPlugins final
{
public:
    explicit SignedPlugins(PluginKeys newKeys);
    ~SignedPlugins();

    SignedPlugins(SignedPlugins const&) = delete;
    SignedPlugins& operator=(SignedPlugins const&) = delete;

    /// Reads and checks a plug-in. Returns a sentence if it is refused; empty if it may be loaded.
    std::string Admit(std::filesystem::path const& file);

    /// The path from which an admitted plug-in is loaded. Throws `Zu::Status::NOT_FOUND` for any other file.
    std::filesystem::path LoadPath(std::filesystem::path const& file) const;

    /// A sentence on the key that has signed an admitted plug-in.
    std::string SignerOf(std::filesystem::path const& file) const;

private:
    struct Plugin
    {
        std::unique_ptr<SealedFile> copy;
        std::size_t signer;
    };

    Plugin const& Find(std::filesystem::path const& file) const;

    PluginKeys const keys;
    std::map<std::filesystem::path, Plugin> plugins;
};

} // namespace ZuHost
