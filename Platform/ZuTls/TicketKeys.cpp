#include "ZuTls/TicketKeys.h"

#include <openssl/core_names.h>
#include <openssl/params.h>
#include <openssl/rand.h>

#include <algorithm>
#include <utility>

namespace ZuTls
{

namespace
{

constexpr int INITIAL_VECTOR_BYTES = 16; // of AES-256-CBC

} // namespace

TicketKeys::TicketKeys(std::function<uint64()> newMonotonicUsec) : monotonicUsec(std::move(newMonotonicUsec))
{
}

std::optional<TicketKeys::Keys> TicketKeys::Keys::Draw()
{
    Keys keys{};
    bool const isDrawn = RAND_bytes(keys.name.data(), static_cast<int>(keys.name.size())) == 1 &&
                         RAND_priv_bytes(keys.cipher.data(), static_cast<int>(keys.cipher.size())) == 1 &&
                         RAND_priv_bytes(keys.mac.data(), static_cast<int>(keys.mac.size())) == 1;
    return isDrawn ? std::optional(keys) : std::nullopt;
}

/// Drops keys that are too old. Returns false if there are no present keys afterwards.
bool TicketKeys::Renew()
{
    uint64 const nowUsec = monotonicUsec();
    if (present.has_value() && nowUsec - sinceUsec < PERIOD_USEC)
    {
        return true;
    }
    previous = nowUsec - sinceUsec < 2 * PERIOD_USEC ? present : std::nullopt;
    present = Keys::Draw();
    sinceUsec = nowUsec;
    return present.has_value();
}

bool TicketKeys::Use(Keys& keys, EVP_MAC_CTX& mac)
{
    char digest[] = "SHA256";
    OSSL_PARAM const parameters[] = {
        OSSL_PARAM_construct_octet_string(OSSL_MAC_PARAM_KEY, keys.mac.data(), keys.mac.size()),
        OSSL_PARAM_construct_utf8_string(OSSL_MAC_PARAM_DIGEST, digest, 0), OSSL_PARAM_construct_end()};
    return EVP_MAC_CTX_set_params(&mac, parameters) == 1;
}

int TicketKeys::Seal(unsigned char* name, unsigned char* initialVector, EVP_CIPHER_CTX& cipher, EVP_MAC_CTX& mac)
{
    Zu::MutexLock const held(lock);
    if (!Renew() || RAND_bytes(initialVector, INITIAL_VECTOR_BYTES) != 1)
    {
        return -1;
    }
    std::copy(present->name.begin(), present->name.end(), name);
    bool const isReady =
        EVP_EncryptInit_ex(&cipher, EVP_aes_256_cbc(), nullptr, present->cipher.data(), initialVector) == 1;
    return isReady && Use(*present, mac) ? 1 : -1;
}

int TicketKeys::Open(unsigned char const* name, unsigned char const* initialVector, EVP_CIPHER_CTX& cipher,
                     EVP_MAC_CTX& mac)
{
    Zu::MutexLock const held(lock);
    Renew();
    auto const isNamed = [name](std::optional<Keys> const& keys) {
        return keys.has_value() && std::equal(keys->name.begin(), keys->name.end(), name);
    };
    bool const isPresent = isNamed(present);
    if (!isPresent && !isNamed(previous))
    {
        return 0;
    }
    Keys& keys = isPresent ? *present : *previous;
    bool const isReady =
        EVP_DecryptInit_ex(&cipher, EVP_aes_256_cbc(), nullptr, keys.cipher.data(), initialVector) == 1;
    if (!isReady || !Use(keys, mac))
    {
        return -1;
    }
    return isPresent ? 1 : 2;
}

} // namespace ZuTls
