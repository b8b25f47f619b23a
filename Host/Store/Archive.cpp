#include "Host/Store/Archive.h"

#include "Host/Store/Deflate.h"
#include "Host/Store/DocumentCheck.h"
#include "Host/Store/SqliteStatement.h"
#include "ZuApi/Exception.h"

#include <algorithm>
#include <ctime>
#include <sys/stat.h>

namespace ZuHost
{

namespace
{

using Files = ArchiveContents::Files;

constexpr char const* ENTRIES = "sqlar"; // the name that the format gives
constexpr char const* LAST_GOOD = "lastgood";
constexpr int64 MODE = S_IFREG | S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;

/// Whether a file of this name, extracted in a folder, stays in it.
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

enum Column
{
    NAME,
    ACCESS,
    SIZE,
    DATA
};

bool IsFolder(SqliteStatement const& row)
{
    return (row.Number(ACCESS) & S_IFMT) == S_IFDIR;
}

/// Why a row is no file that may be unpacked; empty when it is one.
std::string FaultOf(SqliteStatement const& row)
{
    int64 const size = row.Number(SIZE);
    if (!IsSafeName(row.Bytes(NAME)))
    {
        return "its name is not safe";
    }
    if ((row.Number(ACCESS) & S_IFMT) == S_IFLNK || size < 0 || !row.HasBytes(DATA))
    {
        return "it is no file";
    }
    if (static_cast<uint64>(size) > DocumentCheck::MAX_BYTES)
    {
        return "it is longer than " + std::to_string(DocumentCheck::MAX_BYTES) + " bytes";
    }
    return {};
}

void NoteFault(ArchiveContents& contents, std::string name, std::string fault)
{
    if (contents.faults.size() < Archive::MAX_ENTRIES)
    {
        contents.faults.emplace(std::move(name), std::move(fault));
    }
}

/// For the eye: what cannot stand in a line of text shows as a question mark.
std::string Shown(std::string_view name)
{
    std::string text(name.substr(0, Archive::MAX_NAME_BYTES));
    std::ranges::replace_if(
        text, [](unsigned char byte) { return byte < 0x20 || byte >= 0x7F; }, '?');
    return text;
}

} // namespace

Archive::Archive(std::filesystem::path const& path, SqliteFile::Access access) : file(path, access)
{
}

Archive::Archive(std::string const& name, std::string_view bytes) : file(name, bytes)
{
}

Archive::~Archive() = default;

std::string Archive::FindFault()
{
    try
    {
        SqliteStatement check(file, "PRAGMA integrity_check(1)");
        std::string const result(check.Step() ? check.Bytes(0) : "");
        return result == "ok" ? "" : result;
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
    return HasTable(ENTRIES);
}

ArchiveContents Archive::Read()
{
    ArchiveContents contents;
    ReadTable(ENTRIES, contents.entries, contents);
    ReadTable(LAST_GOOD, contents.lastGood, contents);
    return contents;
}

void Archive::Write(Files const& entries, Files const& lastGood)
{
    file.Run("BEGIN IMMEDIATE");
    WriteTable(ENTRIES, entries);
    WriteTable(LAST_GOOD, lastGood);
    file.Run("COMMIT");
}

std::string Archive::Image() const
{
    return file.Image();
}

void Archive::ReadTable(char const* table, Files& files, ArchiveContents& contents)
{
    if (!HasTable(table))
    {
        return;
    }
    try
    {
        uint64 totalBytes = 0;
        SqliteStatement rows(file, std::string("SELECT name, mode, sz, data FROM ") + table);
        while (rows.Step())
        {
            if (IsFolder(rows))
            {
                continue;
            }
            std::string fault = FaultOf(rows);
            auto const size = static_cast<uint64>(rows.Number(SIZE));
            auto bytes = fault.empty() ? Deflate::Unpack(rows.Bytes(DATA), size) : std::nullopt;
            if (!bytes.has_value())
            {
                NoteFault(contents, Shown(rows.Bytes(NAME)), fault.empty() ? "its content is damaged" : fault);
                continue;
            }
            totalBytes += size;
            if (files.size() == MAX_ENTRIES || totalBytes > MAX_TOTAL_BYTES)
            {
                ZU_THROW(Zu::Status::BAD_FORMAT, "there is too much in it");
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
        NoteFault(contents, "", exception.what()); // what was read until here stands
    }
}

void Archive::WriteTable(char const* table, Files const& files)
{
    file.Run((std::string("CREATE TABLE IF NOT EXISTS ") + table +
              "(name TEXT PRIMARY KEY, mode INT, mtime INT, sz INT, data BLOB)")
                 .c_str());
    SqliteStatement replace(file, std::string("REPLACE INTO ") + table +
                                      "(name, mode, mtime, sz, data) VALUES(?1, ?2, ?3, ?4, ?5)");
    for (auto const& [name, bytes] : files)
    {
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

bool Archive::HasTable(char const* name) const
{
    // A page of its own and no column that is generated: what a stranger has put together otherwise computes its rows.
    SqliteStatement find(file,
                         "SELECT 1 FROM sqlite_schema WHERE type = 'table' AND name = ?1 AND rootpage > 0 AND NOT "
                         "EXISTS (SELECT 1 FROM pragma_table_xinfo(?1) WHERE hidden <> 0)");
    find.BindText(1, name);
    return find.Step();
}

} // namespace ZuHost
