#include "ZuPlugin/ElfText.h"

#include "Platform/ZuPlugin/PluginTestFiles.h"
#include "ZuApi/Exception.h"
#include "ZuPlugin/PluginEntry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace ZuPlugin
{

namespace
{

/// Reads everything that the loader reads. Returns the reason of a refusal; empty if the file was accepted.
std::string ReasonAgainst(std::string const& path)
{
    try
    {
        ElfText elf(path);
        elf.HasFunction("ZuPlugin_Count");
        elf.Text("ZuPlugin_AbiText");
        return {};
    }
    catch (Zu::Exception const& exception)
    {
        EXPECT_STRNE(exception.what(), "");
        return exception.what();
    }
}

} // namespace

TEST(ElfText, ReadsSymbolsAndTextsOfALibrary)
{
    ElfText elf(TestPluginPath("Good"));

    EXPECT_TRUE(elf.HasFunction("ZuPlugin_Count"));
    EXPECT_FALSE(elf.HasFunction("ZuPlugin_AbiText")); // is no function
    EXPECT_FALSE(elf.HasFunction("malloc"));           // is used, not offered
    EXPECT_FALSE(elf.HasFunction(""));
    EXPECT_EQ(elf.Text("ZuPlugin_AbiText"), ZU_PLUGIN_ABI_TEXT);
    EXPECT_THROW(elf.Text("ZuPlugin_Count"), Zu::Exception);
}

TEST(ElfText, RefusesEveryFileThatIsCutShort)
{
    TemporaryFolder const folder;
    std::string const whole = ReadFile(TestPluginPath("Good"));
    ASSERT_GT(whole.size(), 4096U);

    for (std::size_t part = 0; part < 64; ++part)
    {
        std::string const path = folder.Write("cut.so", whole.substr(0, whole.size() * part / 64));
        EXPECT_NE(ReasonAgainst(path), "") << part;
    }
    EXPECT_EQ(ReasonAgainst(folder.Write("cut.so", whole.substr(0, whole.size() - 1))), "it is cut short");
}

TEST(ElfText, RefusesWhatIsNoLibraryOfThisMachine)
{
    TemporaryFolder const folder;
    std::string const whole = ReadFile(TestPluginPath("Good"));
    auto const with = [&](std::size_t offset, char byte) {
        std::string changed = whole;
        changed.at(offset) = byte;
        return folder.Write("changed.so", changed);
    };

    EXPECT_EQ(ReasonAgainst(folder.Path("none.so")), "there is no such file");
    EXPECT_EQ(ReasonAgainst(folder.Path("")), "there is no such file");
    EXPECT_EQ(ReasonAgainst(folder.Write("empty.so", "")), "it is no shared object");
    EXPECT_EQ(ReasonAgainst(folder.Write("text.so", "#!/bin/sh\n")), "it is no shared object");
    EXPECT_EQ(ReasonAgainst(with(EI_CLASS, ELFCLASS32)), "it was built for another kind of machine");
    EXPECT_EQ(ReasonAgainst(with(offsetof(Elf64_Ehdr, e_machine), EM_386)), "it was built for another kind of machine");
    EXPECT_EQ(ReasonAgainst(with(offsetof(Elf64_Ehdr, e_type), ET_REL)), "it is no shared object");
    EXPECT_EQ(ReasonAgainst(with(offsetof(Elf64_Ehdr, e_shentsize), 1)),
              "it is damaged: its tables have entries of a wrong size");
    EXPECT_EQ(ReasonAgainst(with(offsetof(Elf64_Ehdr, e_shoff) + 7, '\x7f')), "it is cut short");
}

TEST(ElfText, AnswersOrRefusesWhateverTheBytesAre)
{
    TemporaryFolder const folder;
    std::string const whole = ReadFile(TestPluginPath("Good"));
    std::mt19937 random(20);
    std::uniform_int_distribution<int> byte(0, 255);
    Elf64_Ehdr header{};
    std::copy_n(whole.data(), sizeof(header), reinterpret_cast<char*>(&header));
    // The header, the segments and the section table: the reader depends on these bytes.
    std::uniform_int_distribution<std::size_t> inFront(0, sizeof(header) + 10 * sizeof(Elf64_Phdr));
    std::uniform_int_distribution<std::size_t> inBack(header.e_shoff, whole.size() - 1);

    int refused = 0;
    for (int round = 0; round < 300; ++round)
    {
        std::string changed = whole;
        for (int i = 0; i < 4; ++i)
        {
            changed[inFront(random)] = static_cast<char>(byte(random));
            changed[inBack(random)] = static_cast<char>(byte(random));
        }
        refused += ReasonAgainst(folder.Write("damaged.so", changed)).empty() ? 0 : 1;
    }

    EXPECT_GT(refused, 0);
}

} // namespace ZuPlugin
