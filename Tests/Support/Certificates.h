#pragma once

#include "wApi/wTypes.h"

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace ZuTest
{

/// The properties of a certificate for a test.
struct CertificateWish
{
    enum class KeyType
    {
        EC_P256,
        RSA_2048,
        RSA_1024,
        ED25519
    };

    enum class Purpose
    {
        ANY,
        SERVER,
        CLIENT,
        AUTHORITY
    };

    std::string commonName = "test";
    std::vector<std::string> names; ///< host names, and IP addresses in digits
    Purpose purpose = Purpose::ANY;
    KeyType keyType = KeyType::EC_P256;
    bool isSignedWithSha1 = false;         ///< else with SHA-256
    int64 fromUtcSeconds = 1'700'000'000;  ///< 2023-11-14
    int64 untilUtcSeconds = 4'000'000'000; ///< 2096-10-02

    /// Object identifiers with the UTF-8 text of the extension, which becomes an ASN.1 UTF8String.
    std::vector<std::pair<std::string, std::string>> textExtensions;
    /// Object identifiers with the bytes of the extension as they are.
    std::vector<std::pair<std::string, std::string>> rawExtensions;
};

/// A certificate with its private key, made for a test. Without a signer it is signed by itself.
class TestCertificate final
{
public:
    explicit TestCertificate(CertificateWish const& wish, TestCertificate const* signer = nullptr);

    std::string certificatePem;
    std::string keyPem;

    /// Writes the certificate to FOLDER/NAME.pem and the key, of mode 600, to FOLDER/NAME.key. The certificates of
    /// `behind` follow in the same file.
    void Write(std::filesystem::path const& folder, std::string const& name,
               std::vector<TestCertificate const*> const& behind = {}) const;
};

/// Lists of revoked certificates as PEM, signed by `authority`. The second time is 0 for a list without an end.
std::string RevocationList(TestCertificate const& authority, std::vector<TestCertificate const*> const& revoked,
                           int64 fromUtcSeconds, int64 untilUtcSeconds);

} // namespace ZuTest
