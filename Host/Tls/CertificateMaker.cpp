#include "Host/Tls/CertificateMaker.h"

#include "ZuApi/Exception.h"

#include <openssl/ec.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <arpa/inet.h>
#include <array>
#include <memory>

namespace ZuHost
{

namespace
{

constexpr std::size_t MAX_COMMON_NAME = 64; // of X.520
constexpr int SERIAL_BYTES = 16;

void FreeBio(BIO* bio)
{
    BIO_free(bio);
}

using Bio = std::unique_ptr<BIO, decltype(&FreeBio)>;
using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;
using Extension = std::unique_ptr<X509_EXTENSION, decltype(&X509_EXTENSION_free)>;

void Must(bool isDone)
{
    if (!isDone)
    {
        unsigned long const error = ERR_get_error();
        ERR_clear_error();
        char const* const reason = ERR_reason_error_string(error);
        ZU_THROW(Zu::Status::FAILURE, "A certificate cannot be made: %s", reason == nullptr ? "no reason" : reason);
    }
}

Bio BioOf(std::string const& text)
{
    return {BIO_new_mem_buf(text.data(), static_cast<int>(text.size())), &FreeBio};
}

std::string TextOf(Bio const& bio)
{
    char* bytes = nullptr;
    long const count = BIO_get_mem_data(bio.get(), &bytes);
    return {bytes, static_cast<std::size_t>(count)};
}

Certificate ParseCertificate(std::string const& pem)
{
    Certificate certificate(PEM_read_bio_X509(BioOf(pem).get(), nullptr, nullptr, nullptr), &X509_free);
    Must(certificate != nullptr);
    return certificate;
}

void Add(X509& certificate, X509& issuer, int kind, std::string const& value)
{
    X509V3_CTX context;
    X509V3_set_ctx(&context, &issuer, &certificate, nullptr, nullptr, 0);
    Extension const extension(X509V3_EXT_conf_nid(nullptr, &context, kind, value.c_str()), &X509_EXTENSION_free);
    Must(extension != nullptr && X509_add_ext(&certificate, extension.get(), -1) == 1);
}

bool IsAddress(std::string const& name)
{
    std::array<unsigned char, sizeof(in6_addr)> bytes{};
    return inet_pton(AF_INET, name.c_str(), bytes.data()) == 1 || inet_pton(AF_INET6, name.c_str(), bytes.data()) == 1;
}

std::string NamesText(std::vector<std::string> const& names)
{
    std::string text;
    for (std::string const& name : names)
    {
        text.append(text.empty() ? "" : ",").append(IsAddress(name) ? "IP:" : "DNS:").append(name);
    }
    return text;
}

/// A certificate without issuer, extensions and signature.
Certificate Begin(std::string const& name, Validity const& validity, EVP_PKEY& key)
{
    Certificate certificate(X509_new(), &X509_free);
    std::array<unsigned char, SERIAL_BYTES> serial{};
    Must(certificate != nullptr && RAND_bytes(serial.data(), SERIAL_BYTES) == 1);
    serial[0] = static_cast<unsigned char>((serial[0] & 0x7FU) | 0x40U); // positive, of full length
    BIGNUM* const number = BN_bin2bn(serial.data(), SERIAL_BYTES, nullptr);
    bool const hasSerial = BN_to_ASN1_INTEGER(number, X509_get_serialNumber(certificate.get())) != nullptr;
    BN_free(number);
    std::string const commonName = name.substr(0, MAX_COMMON_NAME);
    Must(hasSerial && X509_set_version(certificate.get(), X509_VERSION_3) == 1 &&
         ASN1_TIME_set(X509_getm_notBefore(certificate.get()), validity.fromUtcSeconds) != nullptr &&
         ASN1_TIME_set(X509_getm_notAfter(certificate.get()), validity.untilUtcSeconds) != nullptr &&
         X509_set_pubkey(certificate.get(), &key) == 1 &&
         X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate.get()), "CN", MBSTRING_UTF8,
                                    reinterpret_cast<unsigned char const*>(commonName.data()),
                                    static_cast<int>(commonName.size()), -1, 0) == 1);
    return certificate;
}

Key MakeKey()
{
    Key key(EVP_EC_gen("P-256"), &EVP_PKEY_free);
    Must(key != nullptr);
    return key;
}

MadeCertificate Sign(X509& certificate, EVP_PKEY& key, EVP_PKEY& signer)
{
    Must(X509_sign(&certificate, &signer, EVP_sha256()) > 0);
    Bio const text(BIO_new(BIO_s_mem()), &FreeBio);
    Bio const keyText(BIO_new(BIO_s_secmem()), &FreeBio);
    Must(PEM_write_bio_X509(text.get(), &certificate) == 1 &&
         PEM_write_bio_PKCS8PrivateKey(keyText.get(), &key, nullptr, nullptr, 0, nullptr, nullptr) == 1);
    return {TextOf(text), TextOf(keyText)};
}

} // namespace

MadeCertificate MakeAuthority(std::string const& name, Validity const& validity)
{
    Key const key = MakeKey();
    Certificate const certificate = Begin(name, validity, *key);
    Must(X509_set_issuer_name(certificate.get(), X509_get_subject_name(certificate.get())) == 1);
    Add(*certificate, *certificate, NID_basic_constraints, "critical,CA:TRUE,pathlen:0");
    Add(*certificate, *certificate, NID_key_usage, "critical,keyCertSign,cRLSign");
    Add(*certificate, *certificate, NID_subject_key_identifier, "hash");
    return Sign(*certificate, *key, *key);
}

MadeCertificate MakeServerCertificate(MadeCertificate const& authority, std::vector<std::string> const& names,
                                      Validity const& validity)
{
    Certificate const issuer = ParseCertificate(authority.certificatePem);
    Key const signer(PEM_read_bio_PrivateKey(BioOf(authority.keyPem).get(), nullptr, nullptr, nullptr), &EVP_PKEY_free);
    Must(signer != nullptr);
    Key const key = MakeKey();
    Certificate const certificate = Begin(names.front(), validity, *key);
    Must(X509_set_issuer_name(certificate.get(), X509_get_subject_name(issuer.get())) == 1);
    Add(*certificate, *issuer, NID_basic_constraints, "critical,CA:FALSE");
    Add(*certificate, *issuer, NID_key_usage, "critical,digitalSignature");
    Add(*certificate, *issuer, NID_ext_key_usage, "serverAuth");
    Add(*certificate, *issuer, NID_subject_key_identifier, "hash");
    Add(*certificate, *issuer, NID_authority_key_identifier, "keyid");
    Add(*certificate, *issuer, NID_subject_alt_name, NamesText(names));
    return Sign(*certificate, *key, *signer);
}

bool IsSignedBy(std::string const& certificatePem, std::string const& authorityPem)
{
    Certificate const certificate = ParseCertificate(certificatePem);
    Certificate const authority = ParseCertificate(authorityPem);
    bool const isSigned = X509_verify(certificate.get(), X509_get0_pubkey(authority.get())) == 1;
    ERR_clear_error();
    return isSigned;
}

} // namespace ZuHost
