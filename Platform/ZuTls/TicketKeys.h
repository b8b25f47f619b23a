#pragma once

#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <openssl/evp.h>

#include <array>
#include <functional>
#include <optional>

namespace ZuTls
{

/// The keys that seal the session tickets of a server: the present ones and the previous ones.
///
/// New keys replace the present ones once a period has passed. Tickets under the previous keys are read for one more
/// period and then refused, which leads to a full handshake. Any thread may call.
class TicketKeys final
{
public:
    static constexpr uint64 PERIOD_USEC = 3'600'000'000;
    static constexpr std::size_t NAME_BYTES = 16;

    explicit TicketKeys(std::function<uint64()> newMonotonicUsec);

    /// Prepares the sealing of a ticket, as OpenSSL's ticket key callback: 1 when done, -1 for a failure.
    int Seal(unsigned char* name, unsigned char* initialVector, EVP_CIPHER_CTX& cipher, EVP_MAC_CTX& mac);

    /// Prepares the reading of a ticket: 0 if its keys are gone, 2 if the client is to get a ticket under the present keys.
    int Open(unsigned char const* name, unsigned char const* initialVector, EVP_CIPHER_CTX& cipher, EVP_MAC_CTX& mac);

private:
    struct Keys
    {
        std::array<unsigned char, NAME_BYTES> name;
        std::array<unsigned char, 32> cipher;
        std::array<unsigned char, 32> mac;

        static std::optional<Keys> Draw();
    };

    bool Renew() ZU_REQUIRES(lock);
    static bool Use(Keys& keys, EVP_MAC_CTX& mac);

    std::function<uint64()> const monotonicUsec; // called under the lock
    Zu::Mutex lock;                              // a leaf
    std::optional<Keys> present ZU_GUARDED_BY(lock);
    std::optional<Keys> previous ZU_GUARDED_BY(lock);
    uint64 sinceUsec ZU_GUARDED_BY(lock) = 0;
};

} // namespace ZuTls
