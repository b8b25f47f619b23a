#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

using EVP_PKEY = struct evp_pkey_st;

namespace ZuHost
{

/// Ed25519 public keys of those who may sign plug-ins.
class PluginKeys final
{
public:
    static constexpr std::size_t SIGNATURE_BYTES = 64;

    /// Reads keys as PEM ("BEGIN PUBLIC KEY") or as lines of Base64; lines that begin with "#" are comments. Throws
    /// `Zu::Status::BAD_ARGUMENT` with one line for the user for a file that cannot be read, has no key or has another
    /// content, and for one that everyone can change.
    explicit PluginKeys(std::filesystem::path const& newFile);
    ~PluginKeys();

    PluginKeys(PluginKeys&&) noexcept;
    PluginKeys(PluginKeys const&) = delete;
    PluginKeys& operator=(PluginKeys const&) = delete;

    std::filesystem::path const& File() const;

    /// The number of the key, from 1, that has made the signature of these bytes; 0 if none has.
    std::size_t SignerOf(std::string_view bytes, std::string_view signature) const;

private:
    struct Freer
    {
        void operator()(EVP_PKEY* key) const noexcept;
    };
    using Key = std::unique_ptr<EVP_PKEY, Freer>;

    static Key OfPem(std::string const& text);
    static Key OfBase64(std::string const& line);

    std::filesystem::path file;
    std::vector<Key> keys;
};

} // namespace ZuHost
