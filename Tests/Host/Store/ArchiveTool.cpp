#include "Host/Store/ArchiveTool.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>

namespace ZuTest
{

namespace
{

std::string Run(std::string const& command)
{
    std::string output;
    std::FILE* const pipe = popen((command + " 2>&1").c_str(), "r");
    std::array<char, 4096> part{};
    for (std::size_t count = 0; (count = std::fread(part.data(), 1, part.size(), pipe)) > 0;)
    {
        output.append(part.data(), count);
    }
    EXPECT_EQ(pclose(pipe), 0) << command << '\n' << output;
    return output;
}

} // namespace

std::string RunArchiveTool(std::filesystem::path const& folder, std::filesystem::path const& file,
                           std::string const& words)
{
    return Run("cd '" + folder.string() + "' && sqlite3 '" + file.string() + "' -A " + words);
}

std::string RunSql(std::filesystem::path const& file, std::string const& sql)
{
    return Run("sqlite3 '" + file.string() + "' \"" + sql + "\"");
}

} // namespace ZuTest
