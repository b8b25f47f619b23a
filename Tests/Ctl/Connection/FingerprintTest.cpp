#include "Ctl/Connection/Fingerprint.h"

#include "Ctl/Outcome/Failure.h"

#include <gtest/gtest.h>

namespace ZuCtl
{

namespace
{

// The SHA-256 of the three letters "abc".
constexpr char const* OF_ABC =
    "SHA256:BA:78:16:BF:8F:01:CF:EA:41:41:40:DE:5D:AE:22:23:B0:03:61:A3:96:17:7A:9C:B4:10:FF:"
    "61:F2:00:15:AD";

} // namespace

TEST(Fingerprint, IsThatOfTheBytesOfTheFirstCertificate)
{
    EXPECT_EQ(FingerprintOfPem("text\n-----BEGIN CERTIFICATE-----\nYWJj\n-----END CERTIFICATE-----\n"
                               "-----BEGIN CERTIFICATE-----\nZGVm\n-----END CERTIFICATE-----\n"),
              OF_ABC);
}

TEST(Fingerprint, IsEmptyWithoutACertificate)
{
    EXPECT_EQ(FingerprintOfPem(""), "");
    EXPECT_EQ(FingerprintOfPem("-----BEGIN CERTIFICATE-----\nYWJj\n"), "");
    EXPECT_EQ(FingerprintOfPem("-----END CERTIFICATE-----\n-----BEGIN CERTIFICATE-----\n"), "");
    EXPECT_EQ(FingerprintOfPem("-----BEGIN CERTIFICATE-----\n*\n-----END CERTIFICATE-----\n"), "");
}

TEST(Fingerprint, IsReadInEachUsualForm)
{
    EXPECT_EQ(NormalFingerprint(OF_ABC), OF_ABC);
    EXPECT_EQ(NormalFingerprint("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"), OF_ABC);
    for (char const* const text : {"", "SHA256:", "BA:78", "not hexadecimal",
                                   "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015adff"})
    {
        EXPECT_THROW(NormalFingerprint(text), Failure) << text;
    }
}

} // namespace ZuCtl
