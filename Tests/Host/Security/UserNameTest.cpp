#include "Host/Security/UserName.h"

#include "Support/Refusal.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace ZuHost
{

namespace
{

struct Accepted
{
    char const* what;
    std::string given;
    std::string shown;
};

struct Refused
{
    char const* what;
    std::string given;
};

std::string Repeated(std::size_t count, std::string_view text)
{
    std::string all;
    for (std::size_t i = 0; i < count; ++i)
    {
        all.append(text);
    }
    return all;
}

} // namespace

TEST(UserName, KeepsTheNormalisedText)
{
    Accepted const names[] = {
        {"plain", "anna", "anna"},
        {"space between", "Anna Schmidt", "Anna Schmidt"},
        {"path characters", "a/b%2F?#&\"'<>\\", "a/b%2F?#&\"'<>\\"},
        {"three dots", "...", "..."},
        {"composed", "Zo\xC3\xAB", "Zo\xC3\xAB"},
        {"decomposed", "Zoe\xCC\x88", "Zo\xC3\xAB"},
        {"ligature", "\xEF\xAC\x81na", "fina"},
        {"full width", "\xEF\xBD\x81\xEF\xBD\x8E\xEF\xBD\x8E\xEF\xBD\x81", "anna"},
        {"no-break space", "a\xC2\xA0z", "a z"},
        {"emoji", "\xF0\x9F\xA4\x96", "\xF0\x9F\xA4\x96"},
        {"other scripts", "\xE5\xB1\xB1\xE7\x94\xB0", "\xE5\xB1\xB1\xE7\x94\xB0"},
        {"right to left", "\xD7\x93\xD7\xA0\xD7\x94", "\xD7\x93\xD7\xA0\xD7\x94"},
        {"64 bytes", std::string(64, 'a'), std::string(64, 'a')},
        {"64 bytes after normalisation", Repeated(64, "\xEF\xBD\x81"), std::string(64, 'a')},
    };
    for (Accepted const& name : names)
    {
        EXPECT_EQ(UserName(name.given).Text(), name.shown) << name.what;
    }
}

TEST(UserName, RefusesTextsThatAreNoNames)
{
    Refused const texts[] = {
        {"empty", ""},
        {"one dot", "."},
        {"two dots", ".."},
        {"two dots after normalisation", "\xE2\x80\xA5"},
        {"65 bytes", std::string(65, 'a')},
        {"65 bytes after normalisation", Repeated(4, "\xEF\xB7\xBA")},
        {"a megabyte", std::string(1 << 20, 'a')},
        {"space", " "},
        {"leading space", " anna"},
        {"trailing space", "anna "},
        {"two spaces", "anna  b"},
        {"no-break space at the end", "anna\xC2\xA0"},
        {"tabulator", "a\tb"},
        {"line feed", "a\nb"},
        {"zero", std::string("a\0b", 3)},
        {"escape", "a\x1B[31m"},
        {"delete", "a\x7F"},
        {"control of the second half", "a\xC2\x85z"},
        {"soft hyphen", "an\xC2\xADna"},
        {"zero width space", "an\xE2\x80\x8Bna"},
        {"zero width joiner", "an\xE2\x80\x8Dna"},
        {"right-to-left override", "an\xE2\x80\xAEna"},
        {"byte order mark", "\xEF\xBB\xBF"
                            "anna"},
        {"variation selector", "a\xEF\xB8\x8F"},
        {"invisible letter", "\xE3\x85\xA4"},
        {"Ogham space", "a\xE1\x9A\x80z"},
        {"line separator", "a\xE2\x80\xA8z"},
        {"private use", "a\xEE\x80\x80"},
        {"unassigned", "a\xCD\xB8"},
        {"no character", "a\xEF\xBF\xBF"},
        {"combining character first", "\xCC\x88"
                                      "a"},
        {"lone byte", "a\x80"},
        {"cut character", "a\xC3"},
        {"form that is too long", "a\xC0\xAF"},
        {"surrogate", "a\xED\xA0\x80"},
        {"above U+10FFFF", "a\xF4\x90\x80\x80"},
    };
    for (Refused const& text : texts)
    {
        auto const refusal = ZuTest::RefusalOf([&] { UserName const name(text.given); });
        EXPECT_EQ(refusal.status, Zu::Status::BAD_ARGUMENT) << text.what;
        EXPECT_EQ(refusal.text,
                  "The name of a user has 1 to 64 bytes of UTF-8, single spaces only between other characters, no "
                  "control, format or invisible characters, and is not '.' or '..'.")
            << text.what;
    }
}

TEST(UserName, IsComparedWithoutCase)
{
    EXPECT_EQ(UserName("Anna"), UserName("ANNA"));
    EXPECT_EQ(UserName("Stra\xC3\x9F"
                       "e"),
              UserName("STRASSE"));
    EXPECT_EQ(UserName("\xCE\xA3\xCE\xAF\xCF\x83\xCF\x85\xCF\x86\xCE\xBF\xCF\x82"),
              UserName("\xCE\xA3\xCE\x8A\xCE\xA3\xCE\xA5\xCE\xA6\xCE\x9F\xCE\xA3"))
        << "two forms of sigma";
    EXPECT_EQ(UserName("Zoe\xCC\x88"), UserName("ZO\xC3\x8B"));
    EXPECT_NE(UserName("anna"), UserName("anne"));
    EXPECT_LT(UserName("Anna"), UserName("bert"));
}

} // namespace ZuHost
