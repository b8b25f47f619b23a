#include "Host/Audit/Sha256.h"

#include "ZuApi/Exception.h"

#include <array>
#include <openssl/evp.h>

namespace ZuHost
{

std::string Sha256Hex(std::string_view bytes)
{
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int size = 0;
    if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), &size, EVP_sha256(), nullptr) != 1)
    {
        ZU_THROW(Zu::Status::FAILURE, "A SHA-256 cannot be computed");
    }
    constexpr std::string_view DIGITS = "0123456789abcdef";
    std::string text;
    text.reserve(std::size_t{2} * size);
    for (unsigned int i = 0; i < size; ++i)
    {
        text.push_back(DIGITS[digest[i] >> 4]);
        text.push_back(DIGITS[digest[i] & 0xF]);
    }
    return text;
}

} // namespace ZuHost
