#include "Ctl/Connection/Fingerprint.h"

#include "Ctl/Outcome/Failure.h"

#include <sodium.h>

#include <array>
#include <string_view>
#include <vector>

namespace ZuCtl
{

namespace
{

constexpr std::string_view PREFIX = "SHA256:";

std::string Shown(std::span<unsigned char const> digest)
{
    constexpr std::string_view DIGITS = "0123456789ABCDEF";
    std::string text(PREFIX);
    for (unsigned char const byte : digest)
    {
        text += text.size() > PREFIX.size() ? ":" : "";
        text += DIGITS[byte / 16u];
        text += DIGITS[byte % 16u];
    }
    return text;
}

} // namespace

std::string FingerprintOf(std::span<unsigned char const> bytes)
{
    std::array<unsigned char, crypto_hash_sha256_BYTES> digest{};
    crypto_hash_sha256(digest.data(), bytes.data(), bytes.size());
    return Shown(digest);
}

std::string FingerprintOfPem(std::string const& pem)
{
    constexpr std::string_view BEGIN = "-----BEGIN CERTIFICATE-----";
    std::size_t const begin = pem.find(BEGIN);
    std::size_t const end = pem.find("-----END CERTIFICATE-----");
    if (begin == std::string::npos || end == std::string::npos || end < begin)
    {
        return "";
    }
    std::string const text = pem.substr(begin + BEGIN.size(), end - begin - BEGIN.size());
    std::vector<unsigned char> bytes(text.size());
    std::size_t size = 0;
    if (sodium_base642bin(bytes.data(), bytes.size(), text.data(), text.size(), "\r\n ", &size, nullptr,
                          sodium_base64_VARIANT_ORIGINAL) != 0)
    {
        return "";
    }
    return FingerprintOf(std::span(bytes.data(), size));
}

std::string NormalFingerprint(std::string const& text)
{
    std::string const digits = text.starts_with(PREFIX) ? text.substr(PREFIX.size()) : text;
    std::array<unsigned char, crypto_hash_sha256_BYTES> digest{};
    std::size_t size = 0;
    char const* end = nullptr;
    int const result = sodium_hex2bin(digest.data(), digest.size(), digits.data(), digits.size(), ": ", &size, &end);
    if (result != 0 || size != digest.size() || end != digits.data() + digits.size())
    {
        throw Failure(ExitStatus::USAGE, "'" + text + "' is no fingerprint, such as SHA256:FA:59:... of 32 bytes");
    }
    return Shown(digest);
}

} // namespace ZuCtl
