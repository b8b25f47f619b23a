#include "Host/Clinic/PluginKeys.h"

#include "Host/Clinic/TestSigner.h"
#include "Support/Refusal.h"
#include "Support/ScratchFolder.h"
#include "ZuApi/Exception.h"

#include <gtest/gtest.h>

#include <openssl/rsa.h>

namespace ZuHost
{

namespace
{

class PluginKeysTest : public testing::Test
{
protected:
    PluginKeys Read(std::string const& text)
    {
        ZuTest::WriteBytes(file, text);
        return PluginKeys(file);
    }

    std::string FaultOf(std::string const& text)
    {
        std::string const fault = ZuTest::RefusalOf([&] { Read(text); }).text;
        std::size_t const position = fault.find(file.string());
        return position == std::string::npos ? fault
                                             : std::string(fault).replace(position, file.string().size(), "FILE");
    }

    ZuTest::ScratchFolder folder;
    std::filesystem::path const file = folder / "keys";
    TestSigner const anna;
    TestSigner const bob;
};

} // namespace

TEST_F(PluginKeysTest, TellsWhichKeyHasSigned)
{
    PluginKeys const keys = Read("# Anna\n" + anna.Pem() + "\n# Bob\r\n" + bob.Base64() + " \r\n");

    EXPECT_EQ(keys.SignerOf("bytes", anna.Sign("bytes")), 1u);
    EXPECT_EQ(keys.SignerOf("bytes", bob.Sign("bytes")), 2u);
    EXPECT_EQ(keys.SignerOf("bytes", TestSigner().Sign("bytes")), 0u);
    EXPECT_EQ(keys.SignerOf("Bytes", anna.Sign("bytes")), 0u);
    EXPECT_EQ(keys.SignerOf("bytes", ""), 0u);
    EXPECT_EQ(keys.SignerOf("bytes", std::string(64, '\0')), 0u);
    EXPECT_EQ(keys.File(), file);
}

TEST_F(PluginKeysTest, RefusesWhatIsNoKey)
{
    EXPECT_EQ(FaultOf(""), "option '--plugin-keys': there is no key in FILE");
    EXPECT_EQ(FaultOf("# only a comment\n"), "option '--plugin-keys': there is no key in FILE");
    EXPECT_EQ(FaultOf("nonsense\n"), "option '--plugin-keys': FILE, line 1: this is no Ed25519 public key");
    EXPECT_EQ(FaultOf(anna.Base64() + "\n" + std::string(44, 'A')),
              "option '--plugin-keys': FILE, line 2: this is no Ed25519 public key");
    EXPECT_EQ(FaultOf(std::string(43, '*') + "="),
              "option '--plugin-keys': FILE, line 1: this is no Ed25519 public key");
    EXPECT_EQ(FaultOf("-----BEGIN PUBLIC KEY-----\nAAAA\n-----END PUBLIC KEY-----\n"),
              "option '--plugin-keys': FILE, line 3: this is no Ed25519 public key");
    EXPECT_EQ(FaultOf("-----BEGIN PUBLIC KEY-----\nAAAA\n"), "option '--plugin-keys': there is no key in FILE");
}

TEST_F(PluginKeysTest, RefusesAKeyOfAnotherKind)
{
    std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> const rsa(EVP_RSA_gen(1024), &EVP_PKEY_free);
    std::unique_ptr<BIO, decltype(&BIO_free)> const bio(BIO_new(BIO_s_mem()), &BIO_free);
    PEM_write_bio_PUBKEY(bio.get(), rsa.get());
    char* text = nullptr;
    long const size = BIO_get_mem_data(bio.get(), &text);

    EXPECT_NE(FaultOf({text, static_cast<std::size_t>(size)}).find("this is no Ed25519 public key"), std::string::npos);
}

TEST_F(PluginKeysTest, RefusesAFileThatIsMissingOrThatEveryoneCanChange)
{
    EXPECT_EQ(ZuTest::RefusalOf([&] { PluginKeys{folder / "none"}; }).status, Zu::Status::BAD_ARGUMENT);
    ZuTest::WriteBytes(file, anna.Pem());
    std::filesystem::permissions(file, std::filesystem::perms::others_write, std::filesystem::perm_options::add);

    EXPECT_EQ(ZuTest::RefusalOf([&] { PluginKeys{file}; }).text,
              "option '--plugin-keys': everyone can change " + file.string() + " or its folder");
}

} // namespace ZuHost
