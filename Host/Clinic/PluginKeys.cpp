#include "Host/Clinic/PluginKeys.h"

#include "Host/Clinic/PluginAccess.h"
#include "ZuApi/Exception.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <utility>

namespace ZuHost
{

namespace
{

constexpr std::size_t KEY_BYTES = 32;
constexpr std::size_t KEY_BASE64_CHARACTERS = 44; // the last one is "="
constexpr std::string_view PEM_BEGIN = "-----BEGIN ";
constexpr std::string_view PEM_END = "-----END ";

} // namespace

void PluginKeys::Freer::operator()(EVP_PKEY* key) const noexcept
{
    EVP_PKEY_free(key);
}

PluginKeys::PluginKeys(std::filesystem::path const& newFile) : file(newFile)
{
    if (PluginAccess::Of(file).writers == PluginAccess::Writers::EVERYONE)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "option '--plugin-keys': everyone can change %s or its folder",
                 file.c_str());
    }
    std::ifstream stream(file);
    std::size_t number = 0;
    std::string pem;
    for (std::string line; std::getline(stream, line);)
    {
        ++number;
        line.erase(line.find_last_not_of(" \t\r") + 1);
        bool const isPem = !pem.empty() || line.starts_with(PEM_BEGIN);
        pem += isPem ? line + "\n" : "";
        if (line.empty() || line.starts_with('#') || (isPem && !line.starts_with(PEM_END)))
        {
            continue;
        }
        Key key = isPem ? OfPem(std::exchange(pem, "")) : OfBase64(line);
        if (key == nullptr)
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "option '--plugin-keys': %s, line %zu: this is no Ed25519 public key",
                     file.c_str(), number);
        }
        keys.push_back(std::move(key));
    }
    if (keys.empty())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "option '--plugin-keys': there is no key in %s", file.c_str());
    }
}

PluginKeys::~PluginKeys() = default;

PluginKeys::PluginKeys(PluginKeys&&) noexcept = default;

std::filesystem::path const& PluginKeys::File() const
{
    return file;
}

std::size_t PluginKeys::SignerOf(std::string_view bytes, std::string_view signature) const
{
    auto const* const content = reinterpret_cast<unsigned char const*>(bytes.data());
    auto const* const mark = reinterpret_cast<unsigned char const*>(signature.data());
    auto const isSigner = [&](Key const& key) {
        std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> const context(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
        return context != nullptr && EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, key.get()) == 1 &&
               EVP_DigestVerify(context.get(), mark, signature.size(), content, bytes.size()) == 1;
    };
    auto const found = std::ranges::find_if(keys, isSigner);
    return found == keys.end() ? 0 : static_cast<std::size_t>(found - keys.begin()) + 1;
}

PluginKeys::Key PluginKeys::OfPem(std::string const& text)
{
    std::unique_ptr<BIO, decltype(&BIO_free)> const bio(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())),
                                                        &BIO_free);
    Key key(bio == nullptr ? nullptr : PEM_read_bio_PUBKEY(bio.get(), nullptr, nullptr, nullptr));
    return key != nullptr && EVP_PKEY_is_a(key.get(), "ED25519") == 1 ? std::move(key) : nullptr;
}

PluginKeys::Key PluginKeys::OfBase64(std::string const& line)
{
    std::array<unsigned char, KEY_BYTES + 1> bytes{}; // the function also writes the padding
    bool const fits = line.size() == KEY_BASE64_CHARACTERS && line.ends_with('=') && !line.ends_with("==");
    if (!fits || EVP_DecodeBlock(bytes.data(), reinterpret_cast<unsigned char const*>(line.data()),
                                 static_cast<int>(line.size())) != static_cast<int>(bytes.size()))
    {
        return nullptr;
    }
    return Key(EVP_PKEY_new_raw_public_key(EVP_PKEY_ED25519, nullptr, bytes.data(), KEY_BYTES));
}

} // namespace ZuHost
