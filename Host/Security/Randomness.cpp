#include "Host/Security/Randomness.h"

#include "ZuApi/Exception.h"

#include <array>
#include <sodium.h>

namespace ZuHost::Randomness
{

namespace
{

constexpr std::size_t SECRET_BYTES = 32;

} // namespace

void Prepare()
{
    static int const outcome = sodium_init();
    if (outcome < 0)
    {
        ZU_THROW(Zu::Status::FAILURE, "The system offers no random numbers.");
    }
}

std::string Secret()
{
    Prepare();
    std::array<unsigned char, SECRET_BYTES> bytes{};
    randombytes_buf(bytes.data(), bytes.size());
    constexpr int VARIANT = sodium_base64_VARIANT_URLSAFE_NO_PADDING;
    std::string text(sodium_base64_ENCODED_LEN(SECRET_BYTES, VARIANT), '\0');
    sodium_bin2base64(text.data(), text.size(), bytes.data(), bytes.size(), VARIANT);
    text.pop_back(); // the terminating zero
    return text;
}

std::string Characters(std::size_t count, std::string_view alphabet)
{
    Prepare();
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
    {
        text.push_back(alphabet[randombytes_uniform(static_cast<uint32_t>(alphabet.size()))]);
    }
    return text;
}

std::string Fingerprint(std::string_view secret)
{
    Prepare();
    std::array<unsigned char, SECRET_BYTES> hash{};
    crypto_generichash(hash.data(), hash.size(), reinterpret_cast<unsigned char const*>(secret.data()), secret.size(),
                       nullptr, 0);
    std::string text(2 * SECRET_BYTES + 1, '\0');
    sodium_bin2hex(text.data(), text.size(), hash.data(), hash.size());
    text.pop_back(); // the terminating zero
    return text;
}

bool AreEqual(std::string_view one, std::string_view other) noexcept
{
    return one.size() == other.size() && sodium_memcmp(one.data(), other.data(), one.size()) == 0;
}

} // namespace ZuHost::Randomness
