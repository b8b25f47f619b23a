#pragma once

#include <array>
#include <memory>
#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <string>

namespace ZuHost
{

/// An Ed25519 key pair for tests.
class TestSigner final
{
public:
    TestSigner() : key(EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519"), &EVP_PKEY_free)
    {
    }

    std::string Sign(std::string const& bytes) const
    {
        std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> const context(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
        std::string signature(64, '\0');
        std::size_t size = signature.size();
        EVP_DigestSignInit(context.get(), nullptr, nullptr, nullptr, key.get());
        EVP_DigestSign(context.get(), reinterpret_cast<unsigned char*>(signature.data()), &size,
                       reinterpret_cast<unsigned char const*>(bytes.data()), bytes.size());
        return signature;
    }

    std::string Pem() const
    {
        std::unique_ptr<BIO, decltype(&BIO_free)> const bio(BIO_new(BIO_s_mem()), &BIO_free);
        PEM_write_bio_PUBKEY(bio.get(), key.get());
        char* text = nullptr;
        long const size = BIO_get_mem_data(bio.get(), &text);
        return {text, static_cast<std::size_t>(size)};
    }

    std::string Base64() const
    {
        std::array<unsigned char, 32> bytes{};
        std::size_t size = bytes.size();
        EVP_PKEY_get_raw_public_key(key.get(), bytes.data(), &size);
        std::array<unsigned char, 45> text{};
        EVP_EncodeBlock(text.data(), bytes.data(), static_cast<int>(size));
        return {reinterpret_cast<char const*>(text.data()), 44};
    }

private:
    std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> const key;
};

} // namespace ZuHost
