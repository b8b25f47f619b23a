#pragma once

#include <filesystem>
#include <string>

namespace ZuTest
{

/// Runs the command-line tool of SQLite, `sqlite3 FILE -A ...`, with these arguments in this folder. Returns its
/// output. Fails the test if the tool fails.
std::string RunArchiveTool(std::filesystem::path const& folder, std::filesystem::path const& file,
                           std::string const& words);

/// Runs this SQL with the tool.
std::string RunSql(std::filesystem::path const& file, std::string const& sql);

} // namespace ZuTest
