#pragma once

#include "wApi/wTypes.h"

#include <string_view>

struct sqlite3_stmt;

namespace ZuHost
{

class SqliteFile;

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
