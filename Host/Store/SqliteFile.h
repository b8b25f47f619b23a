#pragma once

#include "wApi/wTypes.h"

#include <filesystem>
#include <string>
#include <string_view>

struct sqlite3;

namespace ZuHost
{

/// An open SQLite database, of our own or of a stranger: nothing that it brings along is run, no trigger and no view.
///
/// What it is told to keep it keeps through a power cut: one rollback journal beside the file while a transaction runs, and
/// nothing but the file afterwards. What other programs do to the file at the same time is waited for, for some seconds.
/// One thread at a time.
class SqliteFile final
{
public:
    enum class Access
    {
        READ,  ///< the file is there; a journal that a crash left behind is rolled back if the file can be written
        WRITE, ///< as above, and it is to be changed
        CREATE ///< as above, and it is made when it is not there
    };

    static constexpr int BUSY_TIMEOUT_MSEC = 5'000;
    static constexpr int MAX_VALUE_BYTES = 32 * 1024 * 1024;

    /// Throws what `Fail` throws, -999 when there is no such file.
    SqliteFile(std::filesystem::path newPath, Access access);

    /// A database whose file has these bytes, for reading. It lives in memory, under this name.
    SqliteFile(std::string const& name, std::string_view bytes);
    ~SqliteFile();

    SqliteFile(SqliteFile const&) = delete;
    SqliteFile& operator=(SqliteFile const&) = delete;

    /// Runs statements that give no rows of interest.
    void Run(char const* statements);

    /// The whole database as the bytes of its file, as they stand at one moment.
    std::string Image() const;

    /// Text out of a file, for a person: a byte that is not printable ASCII shows as a question mark.
    static std::string Printable(std::string_view text);

    /// Whether the header forbids to write a file that could be written: its format is of a later version, or damaged. Known
    /// once something has been read.
    bool IsOfLaterFormat() const;

    sqlite3& Handle() const;

    /// Throws what the last call failed by, `result`, with a sentence that names the file: -984 for a file that is damaged
    /// or none of this kind, -976 for one that another program holds, 0 for any other reason (a full disk).
    [[noreturn]] void Fail(int result) const;

    /// Throws as above unless `result` is good.
    void Check(int result) const;

private:
    void Open(char const* name, int flags);

    std::filesystem::path const path;
    sqlite3* database = nullptr;
    bool isWritable = false; // as the file system has it
};

} // namespace ZuHost
