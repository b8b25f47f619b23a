#include "Host/Store/SqliteFile.h"

#include "ZuApi/Exception.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <ctime>
#include <sqlite3.h>
#include <utility>

namespace ZuHost
{

namespace
{

int FlagsOf(SqliteFile::Access access)
{
    // SQLite itself falls back to read-only access for a file that cannot be written.
    int const flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX;
    return access == SqliteFile::Access::CREATE ? flags | SQLITE_OPEN_CREATE : flags;
}

int32 StatusOf(int result)
{
    switch (result & 0xFF)
    {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_FORMAT:
    case SQLITE_TOOBIG:
    case SQLITE_INTERRUPT: // by `CheckUsage`
    case SQLITE_ERROR:     // all statements are constant: if one fails to compile, the schema differs
        return Zu::Status::BAD_FORMAT;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return Zu::Status::BUSY;
    default:
        return Zu::Status::FAILURE;
    }
}

/// No statement of the host needs more. A schema that does is not the host's, and is not even compiled.
struct Limit
{
    int id;
    int value;
};

constexpr std::array LIMITS{
    Limit{SQLITE_LIMIT_LENGTH, SqliteFile::MAX_VALUE_BYTES},
    Limit{SQLITE_LIMIT_SQL_LENGTH, 1'000},
    Limit{SQLITE_LIMIT_COLUMN, 16},
    Limit{SQLITE_LIMIT_EXPR_DEPTH, 10},
    Limit{SQLITE_LIMIT_COMPOUND_SELECT, 2},
    Limit{SQLITE_LIMIT_VDBE_OP, 10'000},
    Limit{SQLITE_LIMIT_FUNCTION_ARG, 8},
    Limit{SQLITE_LIMIT_ATTACHED, 0},
    Limit{SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 100},
    Limit{SQLITE_LIMIT_VARIABLE_NUMBER, 12},
    Limit{SQLITE_LIMIT_TRIGGER_DEPTH, 1},
    Limit{SQLITE_LIMIT_WORKER_THREADS, 0},
};

constexpr int OPERATIONS_BETWEEN_CHECKS = 200; // one operation may copy a value of the largest size

uint64 ThreadProcessorUsec()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<uint64>(time.tv_sec) * 1'000'000 + static_cast<uint64>(time.tv_nsec) / 1'000;
}

} // namespace

SqliteFile::Call::Call(SqliteFile const& file) : usage(*file.usage)
{
    usage.callStartUsec = ThreadProcessorUsec();
}

SqliteFile::Call::~Call()
{
    usage.endedUsec += ThreadProcessorUsec() - usage.callStartUsec;
}

SqliteFile::SqliteFile(std::filesystem::path newPath, Access access)
    : path(std::move(newPath)), usage(std::make_unique<Usage>())
{
    std::error_code error;
    if (access != Access::CREATE &&
        std::filesystem::status(path, error).type() == std::filesystem::file_type::not_found)
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "There is no file '%s'", path.c_str());
    }
    try
    {
        Open(path.c_str(), FlagsOf(access));
        if (access != Access::READ)
        {
            Run("PRAGMA journal_mode = DELETE; PRAGMA synchronous = EXTRA");
        }
    }
    catch (...)
    {
        sqlite3_close(database);
        throw;
    }
}

SqliteFile::SqliteFile(std::string const& name, std::string_view bytes) : path(name), usage(std::make_unique<Usage>())
{
    try
    {
        Open(":memory:", SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX);
        auto* const copy = static_cast<unsigned char*>(sqlite3_malloc64(std::max<std::size_t>(bytes.size(), 1)));
        if (copy == nullptr)
        {
            Fail(SQLITE_NOMEM);
        }
        std::memcpy(copy, bytes.data(), bytes.size());
        auto const size = static_cast<sqlite3_int64>(bytes.size());
        Check(sqlite3_deserialize(database, "main", copy, size, size, // SQLite owns the copy from here on
                                  SQLITE_DESERIALIZE_FREEONCLOSE | SQLITE_DESERIALIZE_READONLY));
    }
    catch (...)
    {
        sqlite3_close(database);
        throw;
    }
}

SqliteFile::~SqliteFile()
{
    sqlite3_close(database);
}

void SqliteFile::Run(char const* statements)
{
    Call const call(*this);
    Check(sqlite3_exec(database, statements, nullptr, nullptr, nullptr));
}

std::string SqliteFile::Image() const
{
    sqlite3* opened = nullptr;
    int const result = sqlite3_open_v2(":memory:", &opened, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    std::unique_ptr<sqlite3, int (*)(sqlite3*)> const copy(opened, sqlite3_close);
    Check(result);
    sqlite3_backup* const backup = sqlite3_backup_init(copy.get(), "main", database, "main");
    if (backup == nullptr)
    {
        Fail(sqlite3_errcode(copy.get()));
    }
    int const copied = sqlite3_backup_step(backup, -1);
    sqlite3_backup_finish(backup);
    if (copied != SQLITE_DONE)
    {
        Fail(copied);
    }
    sqlite3_int64 size = 0;
    std::unique_ptr<unsigned char, void (*)(void*)> const bytes(sqlite3_serialize(copy.get(), "main", &size, 0),
                                                                sqlite3_free);
    if (bytes == nullptr)
    {
        Fail(SQLITE_NOMEM);
    }
    return {reinterpret_cast<char const*>(bytes.get()), static_cast<std::size_t>(size)};
}

void SqliteFile::Open(char const* name, int flags)
{
    Check(sqlite3_open_v2(name, &database, flags, nullptr));
    isWritable = sqlite3_db_readonly(database, "main") == 0; // before anything is read
    Check(sqlite3_extended_result_codes(database, 1));
    Check(sqlite3_busy_timeout(database, BUSY_TIMEOUT_MSEC));
    SetLimits();
    // Load as much of a damaged schema as possible, so that the rest of the file can be read. No statement can write
    // the schema, since the database is in defensive mode.
    Run("PRAGMA writable_schema = ON");
    Check(sqlite3_db_config(database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr));
    Check(sqlite3_db_config(database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr));
    Check(sqlite3_db_config(database, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr));
    Check(sqlite3_db_config(database, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr));
    Run("PRAGMA cell_size_check = ON");
    Call const call(*this);
    sqlite3_exec(database, "SELECT 1 FROM sqlite_schema LIMIT 1", nullptr, nullptr, nullptr); // may fail on the schema
}

void SqliteFile::SetLimits()
{
    for (Limit const& limit : LIMITS)
    {
        sqlite3_limit(database, limit.id, limit.value);
    }
    sqlite3_progress_handler(database, OPERATIONS_BETWEEN_CHECKS, &SqliteFile::CheckUsage, usage.get());
}

/// Interrupts the running statement when the time is used up.
int SqliteFile::CheckUsage(void* usage)
{
    auto const& used = *static_cast<Usage const*>(usage);
    uint64 const callUsec = ThreadProcessorUsec() - used.callStartUsec;
    return used.endedUsec + callUsec > MAX_PROCESSOR_USEC ? 1 : 0;
}

std::string SqliteFile::Printable(std::string_view text)
{
    std::string printable(text);
    std::ranges::replace_if(
        printable, [](unsigned char byte) { return byte < 0x20 || byte >= 0x7F; }, '?');
    return printable;
}

bool SqliteFile::IsOfLaterFormat() const
{
    return isWritable && sqlite3_db_readonly(database, "main") == 1;
}

sqlite3& SqliteFile::Handle() const
{
    return *database;
}

void SqliteFile::Fail(int result) const
{
    if ((result & 0xFF) == SQLITE_INTERRUPT)
    {
        ZU_THROW(StatusOf(result), "The file '%s' cannot be used: reading it takes longer than %llu ms",
                 path.filename().c_str(), static_cast<unsigned long long>(MAX_PROCESSOR_USEC / 1'000));
    }
    bool const isLast = database != nullptr && sqlite3_extended_errcode(database) == result;
    std::string const reason = Printable(isLast ? sqlite3_errmsg(database) : sqlite3_errstr(result));
    ZU_THROW(StatusOf(result), "The file '%s' cannot be used: %s", path.filename().c_str(), reason.c_str());
}

void SqliteFile::Check(int result) const
{
    if (result != SQLITE_OK)
    {
        Fail(result);
    }
}

SqliteStatement::SqliteStatement(SqliteFile const& usedFile, std::string_view text) : file(usedFile)
{
    SqliteFile::Call const call(file);
    file.Check(sqlite3_prepare_v2(&file.Handle(), text.data(), static_cast<int>(text.size()), &statement, nullptr));
}

SqliteStatement::~SqliteStatement()
{
    sqlite3_finalize(statement);
}

void SqliteStatement::BindText(int parameter, std::string_view text)
{
    file.Check(sqlite3_bind_text64(statement, parameter, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8));
}

void SqliteStatement::BindBytes(int parameter, std::string_view bytes)
{
    file.Check(sqlite3_bind_blob64(statement, parameter, bytes.data(), bytes.size(), SQLITE_STATIC));
}

void SqliteStatement::BindNumber(int parameter, int64 number)
{
    file.Check(sqlite3_bind_int64(statement, parameter, number));
}

bool SqliteStatement::Step()
{
    int const result = [this] {
        SqliteFile::Call const call(file);
        return sqlite3_step(statement);
    }();
    if (result != SQLITE_ROW && result != SQLITE_DONE)
    {
        file.Fail(result);
    }
    return result == SQLITE_ROW;
}

void SqliteStatement::Reset()
{
    sqlite3_reset(statement); // repeats the status of the last step
}

int64 SqliteStatement::Number(int column) const
{
    return sqlite3_column_int64(statement, column);
}

std::string_view SqliteStatement::Bytes(int column) const
{
    auto const* const bytes = static_cast<char const*>(sqlite3_column_blob(statement, column));
    return bytes == nullptr
               ? std::string_view()
               : std::string_view(bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement, column)));
}

bool SqliteStatement::HasBytes(int column) const
{
    int const type = sqlite3_column_type(statement, column);
    return type != SQLITE_INTEGER && type != SQLITE_FLOAT;
}

} // namespace ZuHost
