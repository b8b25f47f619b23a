#pragma once

#include "wApi/wTypes.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace ZuHost
{

/// An open SQLite database, which may be foreign: triggers and views in it are never run, and all statements together
/// may use `MAX_PROCESSOR_USEC` of their thread's time. Beyond that the file counts as damaged.
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
    static constexpr int MAX_VALUE_BYTES = 17 * 1024 * 1024; ///< of a row
    static constexpr uint64 MAX_PROCESSOR_USEC = 2'000'000;  ///< a sound file of the largest size takes less than 0.1 s

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

    /// Counts the processor time of a call of SQLite, from construction to destruction.
    class Call;

    /// Throws the failure `result` of the last call, with a sentence that names the file: `Zu::Status::BAD_FORMAT` for
    /// a file that is damaged or no database, `Zu::Status::BUSY` for a file that another program holds,
    /// `Zu::Status::FAILURE` for any other reason (a full disk).
    [[noreturn]] void Fail(int result) const;

    /// Throws as `Fail` does unless `result` is SQLITE_OK.
    void Check(int result) const;

private:
    /// The processor time of the calls on this file.
    struct Usage
    {
        uint64 endedUsec = 0;     ///< of the calls that have ended
        uint64 callStartUsec = 0; ///< the thread's time at the start of the running call
    };

    static int CheckUsage(void* usage);
    void Open(char const* name, int flags);
    void SetLimits();

    std::filesystem::path const path;
    std::unique_ptr<Usage> const usage;
    sqlite3* database = nullptr;
    bool isWritable = false; // according to the file system
};

class SqliteFile::Call final
{
public:
    explicit Call(SqliteFile const& file);
    ~Call();

    Call(Call const&) = delete;
    Call& operator=(Call const&) = delete;

private:
    Usage& usage;
};

/// A prepared statement of a database, which may be run repeatedly. As in SQLite, columns count from 0 and parameters
/// from 1.
///
/// A failing step or binding throws as `SqliteFile::Fail` does. The file outlives the statement.
class SqliteStatement final
{
public:
    SqliteStatement(SqliteFile const& usedFile, std::string_view text);
    ~SqliteStatement();

    SqliteStatement(SqliteStatement const&) = delete;
    SqliteStatement& operator=(SqliteStatement const&) = delete;

    /// Bound text and bytes are not copied. The caller keeps them valid until the next `Reset`.
    void BindText(int parameter, std::string_view text);
    void BindBytes(int parameter, std::string_view bytes);
    void BindNumber(int parameter, int64 number);

    /// Returns true while there is a row.
    bool Step();

    /// Prepares the next run. Bound parameters are kept.
    void Reset();

    int64 Number(int column) const;

    /// Text or bytes of the current row; valid until the next step.
    std::string_view Bytes(int column) const;

    /// Whether the column is text, bytes or null, and not a number.
    bool HasBytes(int column) const;

private:
    SqliteFile const& file;
    sqlite3_stmt* statement = nullptr;
};

} // namespace ZuHost
