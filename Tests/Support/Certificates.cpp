#include "Support/Certificates.h"

#include "Support/ScratchFolder.h"

#include <openssl/bio.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>
#include <openssl/x509v3.h>

#include <memory>
#include <stdexcept>

namespace ZuTest
{

namespace
{

using Purpose = CertificateWish::Purpose;
using KeyRef = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using X509Ref = std::unique_ptr<X509, decltype(&X509_free)>;
using BioRef = std::unique_ptr<BIO, decltype(&BIO_free)>;

void Must(bool isDone)
{
    if (!isDone)
    {
        throw std::runtime_error("OpenSSL could not make a certificate for a test");
    }
}

EVP_PKEY* MakeKey(CertificateWish::KeyType type)
{
    switch (type)
    {
    case CertificateWish::KeyType::RSA_2048:
        return EVP_RSA_gen(2048);
    case CertificateWish::KeyType::RSA_1024:
        return EVP_RSA_gen(1024);
    case CertificateWish::KeyType::ED25519:
        return EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519");
    default:
        return EVP_EC_gen("P-256");
    }
}

std::string TextOf(BIO* bio)
{
    char* bytes = nullptr;
    long const count = BIO_get_mem_data(bio, &bytes);
    return {bytes, static_cast<std::size_t>(count)};
}

BioRef BioOf(std::string const& text)
{
    return {BIO_new_mem_buf(text.data(), static_cast<int>(text.size())), &BIO_free};
}

X509Ref ReadCertificate(std::string const& pem)
{
    return {PEM_read_bio_X509(BioOf(pem).get(), nullptr, nullptr, nullptr), &X509_free};
}

void Add(X509& certificate, X509& issuer, int kind, std::string const& value)
{
    X509V3_CTX context;
    X509V3_set_ctx(&context, &issuer, &certificate, nullptr, nullptr, 0);
    X509_EXTENSION* const extension = X509V3_EXT_conf_nid(nullptr, &context, kind, value.c_str());
    Must(extension != nullptr && X509_add_ext(&certificate, extension, -1) == 1);
    X509_EXTENSION_free(extension);
}

void AddBytes(X509& certificate, std::string const& oid, std::string const& bytes)
{
    ASN1_OBJECT* const object = OBJ_txt2obj(oid.c_str(), 1);
    ASN1_OCTET_STRING* const value = ASN1_OCTET_STRING_new();
    Must(ASN1_OCTET_STRING_set(value, reinterpret_cast<unsigned char const*>(bytes.data()),
                               static_cast<int>(bytes.size())) == 1);
    X509_EXTENSION* const extension = X509_EXTENSION_create_by_OBJ(nullptr, object, 0, value);
    Must(extension != nullptr && X509_add_ext(&certificate, extension, -1) == 1);
    X509_EXTENSION_free(extension);
    ASN1_OCTET_STRING_free(value);
    ASN1_OBJECT_free(object);
}

/// The text as an ASN.1 UTF8String.
std::string Utf8String(std::string const& text)
{
    ASN1_UTF8STRING* const value = ASN1_UTF8STRING_new();
    Must(ASN1_STRING_set(value, text.data(), static_cast<int>(text.size())) == 1);
    unsigned char* bytes = nullptr;
    int const count = i2d_ASN1_UTF8STRING(value, &bytes);
    std::string der(reinterpret_cast<char const*>(bytes), static_cast<std::size_t>(count));
    OPENSSL_free(bytes);
    ASN1_UTF8STRING_free(value);
    return der;
}

std::string NamesText(std::vector<std::string> const& names)
{
    std::string text;
    for (std::string const& name : names)
    {
        bool const isAddress =
            name.find_first_not_of("0123456789.") == std::string::npos || name.find(':') != std::string::npos;
        text.append(text.empty() ? "" : ",").append(isAddress ? "IP:" : "DNS:").append(name);
    }
    return text;
}

void AddExtensions(X509& certificate, X509& issuer, CertificateWish const& wish)
{
    bool const isAuthority = wish.purpose == Purpose::AUTHORITY;
    Add(certificate, issuer, NID_basic_constraints, isAuthority ? "critical,CA:TRUE" : "CA:FALSE");
    Add(certificate, issuer, NID_subject_key_identifier, "hash");
    if (isAuthority)
    {
        Add(certificate, issuer, NID_key_usage, "critical,keyCertSign,cRLSign");
    }
    else if (wish.purpose != Purpose::ANY)
    {
        Add(certificate, issuer, NID_ext_key_usage, wish.purpose == Purpose::SERVER ? "serverAuth" : "clientAuth");
    }
    if (!wish.names.empty())
    {
        Add(certificate, issuer, NID_subject_alt_name, NamesText(wish.names));
    }
    for (auto const& [oid, text] : wish.textExtensions)
    {
        AddBytes(certificate, oid, Utf8String(text));
    }
    for (auto const& [oid, bytes] : wish.rawExtensions)
    {
        AddBytes(certificate, oid, bytes);
    }
}

/// A certificate with everything but its names of the issuer and its signature.
X509Ref MakeBody(CertificateWish const& wish, EVP_PKEY& key)
{
    X509Ref certificate(X509_new(), &X509_free);
    Must(certificate != nullptr && X509_set_version(certificate.get(), X509_VERSION_3) == 1);
    uint64 serial = 0;
    Must(RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof serial) == 1);
    ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate.get()), serial >> 1);
    Must(ASN1_TIME_set(X509_getm_notBefore(certificate.get()), wish.fromUtcSeconds) != nullptr &&
         ASN1_TIME_set(X509_getm_notAfter(certificate.get()), wish.untilUtcSeconds) != nullptr);
    X509_set_pubkey(certificate.get(), &key);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate.get()), "CN", MBSTRING_UTF8,
                               reinterpret_cast<unsigned char const*>(wish.commonName.data()),
                               static_cast<int>(wish.commonName.size()), -1, 0);
    return certificate;
}

} // namespace

TestCertificate::TestCertificate(CertificateWish const& wish, TestCertificate const* signer)
{
    KeyRef const key(MakeKey(wish.keyType), &EVP_PKEY_free);
    Must(key != nullptr);
    X509Ref const certificate = MakeBody(wish, *key);
    X509Ref const issuer = signer == nullptr ? X509Ref(nullptr, &X509_free) : ReadCertificate(signer->certificatePem);
    KeyRef const signerKey(
        signer == nullptr ? nullptr : PEM_read_bio_PrivateKey(BioOf(signer->keyPem).get(), nullptr, nullptr, nullptr),
        &EVP_PKEY_free);
    X509& signing = issuer == nullptr ? *certificate : *issuer;
    EVP_PKEY& signingKey = signerKey == nullptr ? *key : *signerKey;
    X509_set_issuer_name(certificate.get(), X509_get_subject_name(&signing));
    AddExtensions(*certificate, signing, wish);
    bool const hashesItself = EVP_PKEY_is_a(&signingKey, "ED25519") == 1;
    EVP_MD const* const digest = wish.isSignedWithSha1 ? EVP_sha1() : EVP_sha256();
    Must(X509_sign(certificate.get(), &signingKey, hashesItself ? nullptr : digest) > 0);

    BioRef const text(BIO_new(BIO_s_mem()), &BIO_free);
    Must(PEM_write_bio_X509(text.get(), certificate.get()) == 1);
    certificatePem = TextOf(text.get());
    BioRef const keyText(BIO_new(BIO_s_mem()), &BIO_free);
    Must(PEM_write_bio_PKCS8PrivateKey(keyText.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr) == 1);
    keyPem = TextOf(keyText.get());
}

void TestCertificate::Write(std::filesystem::path const& folder, std::string const& name,
                            std::vector<TestCertificate const*> const& behind) const
{
    std::string chain = certificatePem;
    for (TestCertificate const* const next : behind)
    {
        chain += next->certificatePem;
    }
    WriteBytes(folder / (name + ".pem"), chain);
    WriteBytes(folder / (name + ".key"), keyPem);
    std::filesystem::permissions(folder / (name + ".key"),
                                 std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

std::string RevocationList(TestCertificate const& authority, std::vector<TestCertificate const*> const& revoked,
                           int64 fromUtcSeconds, int64 untilUtcSeconds)
{
    std::unique_ptr<X509_CRL, decltype(&X509_CRL_free)> const list(X509_CRL_new(), &X509_CRL_free);
    X509Ref const issuer = ReadCertificate(authority.certificatePem);
    KeyRef const key(PEM_read_bio_PrivateKey(BioOf(authority.keyPem).get(), nullptr, nullptr, nullptr), &EVP_PKEY_free);
    Must(list != nullptr && issuer != nullptr && key != nullptr);
    Must(X509_CRL_set_version(list.get(), X509_CRL_VERSION_2) == 1 &&
         X509_CRL_set_issuer_name(list.get(), X509_get_subject_name(issuer.get())) == 1);
    std::unique_ptr<ASN1_TIME, decltype(&ASN1_TIME_free)> const time(ASN1_TIME_set(nullptr, fromUtcSeconds),
                                                                     &ASN1_TIME_free);
    Must(X509_CRL_set1_lastUpdate(list.get(), time.get()) == 1);
    for (TestCertificate const* const one : revoked)
    {
        X509_REVOKED* const entry = X509_REVOKED_new();
        X509Ref const certificate = ReadCertificate(one->certificatePem);
        X509_REVOKED_set_serialNumber(entry, X509_get_serialNumber(certificate.get()));
        X509_REVOKED_set_revocationDate(entry, time.get());
        Must(X509_CRL_add0_revoked(list.get(), entry) == 1);
    }
    if (untilUtcSeconds != 0)
    {
        ASN1_TIME_set(time.get(), untilUtcSeconds);
        Must(X509_CRL_set1_nextUpdate(list.get(), time.get()) == 1);
    }
    Must(X509_CRL_sort(list.get()) == 1 && X509_CRL_sign(list.get(), key.get(), EVP_sha256()) > 0);
    BioRef const text(BIO_new(BIO_s_mem()), &BIO_free);
    Must(PEM_write_bio_X509_CRL(text.get(), list.get()) == 1);
    return TextOf(text.get());
}

} // namespace ZuTest
