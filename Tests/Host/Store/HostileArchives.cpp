#include "Host/Store/HostileArchives.h"

#include "Host/Store/ArchiveTool.h"
#include "Support/ScratchFolder.h"

#include <algorithm>
#include <cstddef>

namespace ZuTest
{

namespace
{

constexpr std::size_t PAGE_BYTES = 1024;
constexpr std::size_t FILE_HEADER_BYTES = 100;
constexpr std::size_t PAGE_COUNT_OFFSET = 28;
constexpr unsigned ENTRIES_PAGE = 2; // the root of the first table of a file
constexpr unsigned LEVELS = 8;
constexpr unsigned CHILDREN = 100;

constexpr char const* ENTRIES = "PRAGMA page_size = 1024; CREATE TABLE sqlar(name TEXT PRIMARY KEY, mode INT, mtime "
                                "INT, sz INT, data BLOB);";
constexpr char const* ONE_ROW = "INSERT INTO sqlar VALUES('a', 33188, 0, 0, '');";

/// An expression of this many terms. Each takes some ten milliseconds.
std::string SlowExpression(int terms)
{
    std::string expression = "1";
    for (int i = 0; i < terms; ++i)
    {
        expression += " AND length(hex(zeroblob(10000000)))";
    }
    return expression;
}

std::string Made(std::string const& sql)
{
    ScratchFolder const scratch;
    RunSql(scratch / "file", sql);
    return BytesOf(scratch / "file");
}

void Put(std::string& bytes, std::size_t offset, std::size_t length, unsigned number)
{
    for (std::size_t i = length; i-- > 0; number >>= 8U)
    {
        bytes[offset + i] = static_cast<char>(number & 0xFFU);
    }
}

/// Writes the header of an inner page of a table at `offset` of a page, and cells that all name `child`.
void PutInnerPage(std::string& page, std::size_t offset, unsigned child)
{
    constexpr std::size_t HEADER_BYTES = 12;
    constexpr std::size_t CELL_BYTES = 5; // the number of the child, and a row number of one byte
    std::fill(page.begin() + static_cast<std::ptrdiff_t>(offset), page.end(), '\0');
    std::size_t const cells = PAGE_BYTES - CHILDREN * CELL_BYTES;
    Put(page, offset, 1, 5); // the kind of the page
    Put(page, offset + 3, 2, CHILDREN);
    Put(page, offset + 5, 2, static_cast<unsigned>(cells));
    Put(page, offset + 8, 4, child); // behind the last cell
    for (unsigned i = 0; i < CHILDREN; ++i)
    {
        std::size_t const cell = cells + i * CELL_BYTES;
        Put(page, offset + HEADER_BYTES + 2 * i, 2, static_cast<unsigned>(cell));
        Put(page, cell, 4, child);
        Put(page, cell + 4, 1, i + 1);
    }
}

/// Turns the leaf `root` of a file into the root of a tree of `LEVELS` levels, in which each page has only one child,
/// `CHILDREN` times.
std::string WithEndlessTree(std::string bytes, unsigned root)
{
    std::size_t const start = (root - 1) * PAGE_BYTES;
    std::size_t const offset = root == 1 ? FILE_HEADER_BYTES : 0;
    std::string leaf = bytes.substr(start, PAGE_BYTES);
    leaf.erase(0, offset); // the cells stay at their offsets, so the gap behind the cell pointers grows
    std::size_t const pointers = 8 + 2 * static_cast<unsigned char>(leaf[4]);
    leaf.insert(pointers, offset, '\0');

    std::string page = bytes.substr(start, PAGE_BYTES);
    auto child = static_cast<unsigned>(bytes.size() / PAGE_BYTES) + 1;
    PutInnerPage(page, offset, child);
    bytes.replace(start, PAGE_BYTES, page);
    for (unsigned level = 1; level < LEVELS; ++level)
    {
        page.assign(PAGE_BYTES, '\0');
        PutInnerPage(page, 0, ++child);
        bytes += page;
    }
    bytes += leaf;
    Put(bytes, PAGE_COUNT_OFFSET, 4, child);
    return bytes;
}

} // namespace

std::string ArchiveWithSlowCheck()
{
    return Made("PRAGMA ignore_check_constraints = ON; CREATE TABLE sqlar(name TEXT PRIMARY KEY, mode INT, mtime INT, "
                "sz INT, data BLOB, CHECK(" +
                SlowExpression(300) + "));" + ONE_ROW);
}

std::string ArchiveWithHiddenCheck()
{
    std::string sql = std::string("PRAGMA ignore_check_constraints = ON;") + ENTRIES + ONE_ROW;
    for (int i = 0; i < 20; ++i) // the check reads the tables in an order of its own, and stops at the first fault
    {
        std::string const table = "slow" + std::to_string(i);
        sql.append("CREATE TABLE ").append(table).append("(a, CHECK(").append(SlowExpression(60));
        sql.append(")); INSERT INTO ").append(table).append(" VALUES(1);");
    }
    // An index of a table with the columns of the schema becomes an index of the schema.
    sql +=
        "CREATE TABLE shape(type TEXT, name TEXT, tbl_name TEXT, rootpage INT, sql TEXT);"
        "INSERT INTO shape SELECT * FROM sqlite_schema WHERE tbl_name = 'sqlar';"
        "CREATE INDEX hides ON shape(type, name, tbl_name, sql);"
        "PRAGMA writable_schema = ON;"
        "UPDATE sqlite_schema SET tbl_name = 'sqlite_master', sql = 'CREATE INDEX hides ON sqlite_master(type, name, "
        "tbl_name, sql)' WHERE name = 'hides';";
    return Made(sql);
}

std::string ArchiveWithEndlessRows()
{
    return WithEndlessTree(Made(std::string(ENTRIES) + ONE_ROW), ENTRIES_PAGE);
}

std::string ArchiveWithEndlessSchema()
{
    return WithEndlessTree(Made(std::string(ENTRIES) + ONE_ROW), 1);
}

std::string ArchiveOfClaims(unsigned rows, unsigned bytes)
{
    return Made(std::string(ENTRIES) +
                "WITH RECURSIVE number(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM number LIMIT " +
                std::to_string(rows) + ") INSERT INTO sqlar SELECT n, 33188, 0, " + std::to_string(bytes) +
                ", x'789c' FROM number;");
}

} // namespace ZuTest
