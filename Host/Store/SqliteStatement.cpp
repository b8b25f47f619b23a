#include "Host/Store/SqliteStatement.h"

#include "Host/Store/SqliteFile.h"

#include <sqlite3.h>

namespace ZuHost
{

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
