#include "Host/Store/Deflate.h"

#include <gtest/gtest.h>

namespace ZuHost
{

TEST(Deflate, MakesWhatRepeatsShorterAndGivesItBack)
{
    std::string const text(5'000, 'x');

    std::string const packed = Deflate::Pack(text);

    EXPECT_LT(packed.size(), 100U);
    EXPECT_EQ(Deflate::Unpack(packed, text.size()), text);
}

TEST(Deflate, LeavesWhatItCannotShorten)
{
    EXPECT_EQ(Deflate::Pack("{}"), "{}");
    EXPECT_EQ(Deflate::Unpack("{}", 2), "{}");
    EXPECT_EQ(Deflate::Unpack("", 0), "");
}

TEST(Deflate, RefusesWhatIsNotAsLongAsItIsSaidToBe)
{
    std::string const packed = Deflate::Pack(std::string(5'000, 'x'));

    EXPECT_EQ(Deflate::Unpack(packed, 4'999), std::nullopt);
    EXPECT_EQ(Deflate::Unpack(packed, 5'001), std::nullopt);
    EXPECT_EQ(Deflate::Unpack(packed, packed.size() - 1), std::nullopt);
}

TEST(Deflate, KnowsWhatSoFewBytesCannotHold)
{
    constexpr std::size_t SIZE = 16 * 1024 * 1024;
    std::size_t const packed = Deflate::Pack(std::string(SIZE, 'x')).size();

    EXPECT_TRUE(Deflate::CanUnpack(packed, SIZE));
    EXPECT_FALSE(Deflate::CanUnpack(packed * 99 / 100, SIZE));
    EXPECT_TRUE(Deflate::CanUnpack(0, 0));
    EXPECT_TRUE(Deflate::CanUnpack(5, 5));
    EXPECT_FALSE(Deflate::CanUnpack(6, 5));
    EXPECT_EQ(Deflate::Unpack(std::string(2, 'x'), SIZE), std::nullopt);
}

TEST(Deflate, RefusesWhatHasChanged)
{
    std::string const text(5'000, 'x');
    std::string const packed = Deflate::Pack(text);

    for (std::size_t i = 0; i < packed.size(); ++i)
    {
        std::string flipped = packed;
        flipped[i] = static_cast<char>(flipped[i] ^ 0x10);
        auto const unpacked = Deflate::Unpack(flipped, text.size());
        EXPECT_TRUE(!unpacked.has_value() || *unpacked == text) << i; // some bits of the header have no meaning
    }
}

} // namespace ZuHost
