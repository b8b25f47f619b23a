#pragma once

#include "ZuTls/Certificate.h"

#include <openssl/evp.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <memory>
#include <vector>

namespace ZuTls
{

/// Owns an object of OpenSSL.
template <typename Object, void (*FREE)(Object*)>
struct Freer
{
    void operator()(Object* object) const noexcept
    {
        FREE(object);
    }
};

inline void FreeBio(BIO* bio)
{
    BIO_free(bio);
}

using Bio = std::unique_ptr<BIO, Freer<BIO, &FreeBio>>;
using X509Ref = std::unique_ptr<X509, Freer<X509, &X509_free>>;
using Key = std::unique_ptr<EVP_PKEY, Freer<EVP_PKEY, &EVP_PKEY_free>>;

/// Throws `std::bad_alloc` for null: where OpenSSL can fail for lack of memory only.
template <typename Pointer>
Pointer NotNull(Pointer pointer)
{
    if (!pointer)
    {
        throw std::bad_alloc();
    }
    return pointer;
}

Certificate FactsOf(X509 const& certificate);

/// As `Certificate::ReadFile`.
std::vector<X509Ref> ReadCertificates(std::filesystem::path const& file);

/// Throws `Zu::Status::BAD_ARGUMENT`, with a sentence that names the file, for a key that cannot be read or used and for a
/// file that every user of the machine may read or change.
Key ReadKey(std::filesystem::path const& file);

} // namespace ZuTls
