#include "Host/Store/Archive.h"

#include "Host/Store/Deflate.h"
#include "Host/Store/DocumentCheck.h"
#include "Host/Store/SqliteFile.h"
#include "ZuApi/Exception.h"

#include <algorithm>
#include <ctime>
#include <optional>
#include <set>
#include <sys/stat.h>

namespace ZuHost
{

namespace
{

using Files = ArchiveContents::Files;

constexpr int MAX_SCHEMA_ROWS = 100;     // a known schema has four
constexpr char const* ENTRIES = "sqlar"; // name required by the format
constexpr char const* LAST_GOOD = "lastgood";
// The columns of the tables that `WriteTable` makes.
constexpr std::string_view COLUMNS = "(name TEXT PRIMARY KEY, mode INT, mtime INT, sz INT, data BLOB)";

// The statement by which `sqlite3 FILE -A -c` makes its table, as the schema keeps it.
constexpr std::string_view TABLE_OF_THE_TOOL = "CREATE TABLE sqlar(\n"
                                               "  name TEXT PRIMARY KEY,  -- name of the file\n"
                                               "  mode INT,               -- access permissions\n"
                                               "  mtime INT,              -- last modification time\n"
                                               "  sz INT,                 -- original file size\n"
                                               "  data BLOB               -- compressed content\n"
                                               ")";

constexpr char const* DAMAGED_CONTENT = "its content is damaged";

constexpr int64 MODE = S_IFREG | S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;

/// Whether a file of this name stays inside the folder into which it is extracted.
bool IsSafeName(std::string_view name)
{
    auto const isControl = [](char character) { return static_cast<unsigned char>(character) < 0x20; };
    if (name.empty() || name.size() > Archive::MAX_NAME_BYTES || name.find('\\') != name.npos ||
        std::ranges::any_of(name, isControl))
    {
        return false;
    }
    for (std::size_t start = 0; start <= name.size();)
    {
        std::size_t const end = std::min(name.find('/', start), name.size());
        std::string_view const segment = name.substr(start, end - start);
        if (segment.empty() || segment == "." || segment == "..")
        {
            return false;
        }
        start = end + 1;
    }
    return true;
}

/// The columns of a row of files.
enum Column
{
    NAME,
    ACCESS,
    SIZE,
    DATA
};

/// The columns of a row of the schema.
enum SchemaColumn
{
    TYPE,
    ITEM,
    TABLE,
    SQL
};

/// Whether a row of the schema is this table of an archive. The whole text is compared, so a table with other columns,
/// constraints or computed values is not accepted.
bool IsTable(std::string_view name, SqliteStatement const& row)
{
    std::string_view const sql = row.Bytes(SQL);
    bool const isOurs = sql == "CREATE TABLE " + std::string(name) + std::string(COLUMNS);
    return row.Bytes(TYPE) == "table" && row.Bytes(ITEM) == name && row.Bytes(TABLE) == name &&
           (isOurs || (name == ENTRIES && sql == TABLE_OF_THE_TOOL));
}

/// Whether a row of the schema is the index of the primary key of this table.
bool IsIndex(std::string_view table, SqliteStatement const& row)
{
    return row.Bytes(TYPE) == "index" && row.Bytes(ITEM) == "sqlite_autoindex_" + std::string(table) + "_1" &&
           row.Bytes(TABLE) == table && row.Bytes(SQL).empty();
}

bool IsAny(std::string_view /*name*/)
{
    return true;
}

/// A folder has no content. A row with content is a file with a damaged mode.
bool IsFolder(SqliteStatement const& row)
{
    return (row.Number(ACCESS) & S_IFMT) == S_IFDIR && row.Bytes(DATA).empty();
}

/// Why a row must not be unpacked as a file; empty if it may.
std::string FaultOf(SqliteStatement const& row)
{
    int64 const size = row.Number(SIZE);
    if (!IsSafeName(row.Bytes(NAME)))
    {
        return "its name is not safe";
    }
    auto const kind = row.Number(ACCESS) & S_IFMT;
    if (kind == S_IFLNK || kind == S_IFDIR || size < 0 || !row.HasBytes(DATA))
    {
        return "it is no file";
    }
    if (static_cast<uint64>(size) > DocumentCheck::MAX_BYTES)
    {
        return "it is longer than " + std::to_string(DocumentCheck::MAX_BYTES) + " bytes";
    }
    return Deflate::CanUnpack(row.Bytes(DATA).size(), static_cast<std::size_t>(size)) ? "" : DAMAGED_CONTENT;
}

void NoteFault(ArchiveContents& contents, std::string name, std::string fault)
{
    if (name.empty() || contents.faults.size() < Archive::MAX_ENTRIES) // the fault of the file as a whole always counts
    {
        contents.faults.emplace(std::move(name), std::move(fault));
    }
}

/// A name as error texts show it.
std::string Shown(std::string_view name)
{
    return SqliteFile::Printable(name.substr(0, Archive::MAX_NAME_BYTES));
}

} // namespace

Archive::Archive(std::filesystem::path const& path, SqliteFile::Access access) : file(path, access)
{
    std::error_code error;
    auto const bytes = std::filesystem::file_size(path, error);
    if (!error && bytes > MAX_FILE_BYTES)
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "The file '%s' is longer than %llu bytes", path.filename().c_str(),
                 static_cast<unsigned long long>(MAX_FILE_BYTES));
    }
}

Archive::Archive(std::string const& name, std::string_view bytes) : file(name, bytes)
{
}

Archive::~Archive() = default;

std::string Archive::FindFault()
{
    try
    {
        if (std::string fault = ReadSchema().fault; !fault.empty())
        {
            return fault; // before the integrity check, which would run constraints from a foreign schema
        }
        SqliteStatement check(file, "PRAGMA integrity_check(1)");
        std::string const result(check.Step() ? check.Bytes(0) : "");
        return result == "ok" ? "" : SqliteFile::Printable(result);
    }
    catch (Zu::Exception const& exception)
    {
        if (exception.Status() != Zu::Status::BAD_FORMAT)
        {
            throw;
        }
        return exception.what();
    }
}

bool Archive::HasTable() const
{
    return ReadSchema().hasEntries;
}

ArchiveContents Archive::Read()
{
    ArchiveContents contents = ReadEntries();
    if (ReadSchema().hasLastGood)
    {
        ReadTable(LAST_GOOD, contents.lastGood, contents);
    }
    return contents;
}

ArchiveContents Archive::ReadEntries()
{
    ArchiveContents contents;
    Schema schema = ReadSchema();
    if (!schema.fault.empty())
    {
        NoteFault(contents, "", std::move(schema.fault));
    }
    if (schema.hasEntries)
    {
        ReadTable(ENTRIES, contents.entries, contents);
    }
    return contents;
}

Files Archive::ReadLastGood()
{
    ArchiveContents contents;
    if (ReadSchema().hasLastGood)
    {
        ReadTable(LAST_GOOD, contents.lastGood, contents);
    }
    return std::move(contents.lastGood);
}

void Archive::Write(Files const& entries, Files const& lastGood)
{
    file.Run("BEGIN IMMEDIATE");
    WriteTable(ENTRIES, entries, IsAny);
    WriteTable(LAST_GOOD, lastGood, IsAny);
    file.Run("COMMIT");
}

void Archive::WriteGood(Files const& entries, NameFilter isDocument)
{
    file.Run("BEGIN IMMEDIATE");
    WriteTable(ENTRIES, entries, IsAny);
    WriteTable(LAST_GOOD, entries, isDocument);
    file.Run("COMMIT");
}

std::string Archive::Image() const
{
    return file.Image();
}

void Archive::ReadTable(char const* table, Files& files, ArchiveContents& contents)
{
    try
    {
        uint64 count = 0;
        uint64 totalBytes = 0;
        SqliteStatement rows(file, std::string("SELECT name, mode, sz, data FROM ") + table + " NOT INDEXED");
        while (rows.Step())
        {
            if (++count > MAX_ROWS)
            {
                ZU_THROW(Zu::Status::BAD_FORMAT, "there is too much in it");
            }
            if (IsFolder(rows))
            {
                continue;
            }
            if (std::string fault = FaultOf(rows); !fault.empty())
            {
                NoteFault(contents, Shown(rows.Bytes(NAME)), std::move(fault));
                continue;
            }
            auto const size = static_cast<uint64>(rows.Number(SIZE));
            totalBytes += size; // as claimed, before anything is allocated for it
            if (files.size() == MAX_ENTRIES || totalBytes > MAX_TOTAL_BYTES)
            {
                ZU_THROW(Zu::Status::BAD_FORMAT, "there is too much in it");
            }
            std::optional<std::string> bytes = Deflate::Unpack(rows.Bytes(DATA), size);
            if (!bytes.has_value())
            {
                NoteFault(contents, Shown(rows.Bytes(NAME)), DAMAGED_CONTENT);
                continue;
            }
            files.emplace(rows.Bytes(NAME), std::move(*bytes));
        }
    }
    catch (Zu::Exception const& exception)
    {
        if (exception.Status() != Zu::Status::BAD_FORMAT)
        {
            throw;
        }
        NoteFault(contents, "", exception.what()); // the entries read so far are kept
    }
}

void Archive::WriteTable(char const* table, Files const& files, NameFilter isWritten)
{
    file.Run((std::string("CREATE TABLE IF NOT EXISTS ") + table + std::string(COLUMNS)).c_str());
    SqliteStatement replace(file, std::string("REPLACE INTO ") + table +
                                      "(name, mode, mtime, sz, data) VALUES(?1, ?2, ?3, ?4, ?5)");
    for (auto const& [name, bytes] : files)
    {
        if (!isWritten(name))
        {
            continue;
        }
        std::string const packed = Deflate::Pack(bytes);
        replace.BindText(1, name);
        replace.BindNumber(2, MODE);
        replace.BindNumber(3, static_cast<int64>(std::time(nullptr)));
        replace.BindNumber(4, static_cast<int64>(bytes.size()));
        replace.BindBytes(5, packed);
        replace.Step();
        replace.Reset();
    }
}

Archive::Schema Archive::ReadSchema() const
{
    Schema schema;
    std::set<std::string> seen;
    int count = 0;
    // "NOT INDEXED": a hostile file can have an index over the schema itself, which hides rows from a reader.
    SqliteStatement rows(file, "SELECT type, name, tbl_name, sql FROM sqlite_schema NOT INDEXED");
    while (rows.Step())
    {
        bool const isEntries = IsTable(ENTRIES, rows);
        bool const isLastGood = IsTable(LAST_GOOD, rows);
        schema.hasEntries = schema.hasEntries || isEntries;
        schema.hasLastGood = schema.hasLastGood || isLastGood;
        bool const isKnown = isEntries || isLastGood || IsIndex(ENTRIES, rows) || IsIndex(LAST_GOOD, rows);
        if (schema.fault.empty() && (!isKnown || !seen.emplace(rows.Bytes(ITEM)).second))
        {
            schema.fault = "its schema is that of no archive: '" + Shown(rows.Bytes(ITEM)) + "'";
        }
        if (++count == MAX_SCHEMA_ROWS)
        {
            break; // there is a fault: a known schema has four rows
        }
    }
    if (schema.fault.empty() && file.IsOfLaterFormat())
    {
        schema.fault = "its header has a version that cannot be written";
    }
    return schema;
}

} // namespace ZuHost
