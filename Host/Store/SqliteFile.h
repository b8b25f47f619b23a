#pragma once

#include "wApi/wTypes.h"

#include <filesystem>
#include <string>
#include <string_view>

struct sqlite3;

namespace ZuHost
{

/// An open SQLite database, which may be foreign: triggers and views in it are never run.
///
/// A transaction survives a power failure. While it runs, a rollback journal lies beside the file; afterwards there is
/// only the file. If another program holds the file, operations wait up to BUSY_TIMEOUT_MSEC. One thread at a time.
class SqliteFile final
{
public:
    enum class Access
    {
        READ,  ///< the file must exist; a journal that a crash left behind is rolled back if the file is writable
        WRITE, ///< as above, for changes
        CREATE ///< as above, and the file is made if it does not exist
    };

    static constexpr int BUSY_TIMEOUT_MSEC = 5'000;
    static constexpr int MAX_VALUE_BYTES = 32 * 1024 * 1024;

    /// Throws as `Fail` does, and `Zu::Status::NOT_FOUND` when there is no such file.
    SqliteFile(std::filesystem::path newPath, Access access);

    /// Opens a copy of the bytes of a database file in memory, for reading; `name` stands in error texts.
    SqliteFile(std::string const& name, std::string_view bytes);
    ~SqliteFile();

    SqliteFile(SqliteFile const&) = delete;
    SqliteFile& operator=(SqliteFile const&) = delete;

    /// Runs statements and discards their rows.
    void Run(char const* statements);

    /// The whole database as the bytes of its file, as of one moment.
    std::string Image() const;

    /// Text from a file as error texts show it: each byte that is not printable ASCII becomes a question mark.
    static std::string Printable(std::string_view text);

    /// Whether the file is writable but its header forbids writing: its format is of a later version, or the header is
    /// damaged. Valid after the first read.
    bool IsOfLaterFormat() const;

    sqlite3& Handle() const;

    /// Throws the failure `result` of the last call, with a sentence that names the file: `Zu::Status::BAD_FORMAT` for
    /// a file that is damaged or no database, `Zu::Status::BUSY` for a file that another program holds,
    /// `Zu::Status::FAILURE` for any other reason (a full disk).
    [[noreturn]] void Fail(int result) const;

    /// Throws as `Fail` does unless `result` is SQLITE_OK.
    void Check(int result) const;

private:
    void Open(char const* name, int flags);

    std::filesystem::path const path;
    sqlite3* database = nullptr;
    bool isWritable = false; // according to the file system
};

} // namespace ZuHost
