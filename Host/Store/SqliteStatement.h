#pragma once

#include "wApi/wTypes.h"

#include <string_view>

struct sqlite3_stmt;

namespace ZuHost
{

class SqliteFile;

/// A statement of a database, run as often as needed. Columns and parameters count from 0 and 1, as SQLite has it.
///
/// What a step or a binding fails by it throws as the file does. The file outlives it.
class SqliteStatement final
{
public:
    SqliteStatement(SqliteFile const& usedFile, std::string_view text);
    ~SqliteStatement();

    SqliteStatement(SqliteStatement const&) = delete;
    SqliteStatement& operator=(SqliteStatement const&) = delete;

    /// What is bound is not copied: it stands until the next `Reset`.
    void BindText(int parameter, std::string_view text);
    void BindBytes(int parameter, std::string_view bytes);
    void BindNumber(int parameter, int64 number);

    /// True while there is a row.
    bool Step();

    /// Ready for the next run, with the parameters that it had.
    void Reset();

    int64 Number(int column) const;

    /// Text or bytes of the row that stands; valid until the next step.
    std::string_view Bytes(int column) const;

    /// Whether the column holds text, bytes or nothing, and no number.
    bool HasBytes(int column) const;

private:
    SqliteFile const& file;
    sqlite3_stmt* statement = nullptr;
};

} // namespace ZuHost
