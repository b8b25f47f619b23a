#pragma once

#include "ZuTls/Certificate.h"

#include <openssl/evp.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <memory>
#include <optional>
#include <string>
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
using CrlRef = std::unique_ptr<X509_CRL, Freer<X509_CRL, &X509_CRL_free>>;
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

/// The lists of revoked certificates in a PEM file. Throws as `ReadCertificates`.
std::vector<CrlRef> ReadRevocations(std::filesystem::path const& file);

/// The authority of a list.
std::string IssuerOf(X509_CRL const& list);

/// The moment from which a list is valid, in seconds since 1970.
int64 BeginOf(X509_CRL const& list);

/// The moment at which the next list was announced. Nothing for a list without an end.
std::optional<int64> EndOf(X509_CRL const& list);

/// Throws `Zu::Status::BAD_ARGUMENT`, with a sentence that names the file, for a key that cannot be read or used and for a
/// file that every user of the machine may read or change.
Key ReadKey(std::filesystem::path const& file);

} // namespace ZuTls
