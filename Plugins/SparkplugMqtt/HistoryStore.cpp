#include "Plugins/SparkplugMqtt/HistoryStore.h"

#include <sqlite3.h>

#include <algorithm>

namespace SparkplugMqtt
{

namespace
{

constexpr char const* IN_MEMORY = ":memory:";

} // namespace

HistoryStore::HistoryStore(std::string const& folder, Limits newLimits)
    : limits(newLimits), shownPath(folder.empty() ? IN_MEMORY : folder + "/" + FILE_NAME)
{
    if (!Open(shownPath))
    {
        std::string const reason = failure;
        Open(IN_MEMORY);
        failure = reason;
        isFallback = true;
    }
}

HistoryStore::~HistoryStore()
{
    Commit(0);
}

void HistoryStore::Add(std::span<uint8 const> metrics, bool isSent, uint64 nowUsec)
{
    uint64 const size = metrics.size() + ROW_BYTES;
    while (!rows.empty() && bytes + size > limits.mostBytes)
    {
        RemoveFirst();
    }
    if (size > limits.mostBytes || !Insert(lastId + 1, metrics))
    {
        lostCount += isSent ? 0 : 1;
        return;
    }
    ++lastId;
    rows.push_back({lastId, static_cast<uint32>(metrics.size()), isSent, nowUsec});
    bytes += size;
    unsentCount += isSent ? 0 : 1;
}

void HistoryStore::LinkLost()
{
    for (Row& row : rows)
    {
        row.isSent = false;
    }
    unsentCount = rows.size();
    cursor = 0;
}

bool HistoryStore::ReadUnsent(std::vector<uint8>& metrics)
{
    for (; cursor < rows.size(); ++cursor)
    {
        Row& row = rows[cursor];
        if (row.isSent)
        {
            continue;
        }
        sqlite3_reset(read.get());
        sqlite3_bind_int64(read.get(), 1, row.id);
        if (sqlite3_step(read.get()) == SQLITE_ROW)
        {
            auto const* const data = static_cast<uint8 const*>(sqlite3_column_blob(read.get(), 0));
            metrics.assign(data, data + sqlite3_column_bytes(read.get(), 0));
            sqlite3_reset(read.get());
            return true;
        }
        sqlite3_reset(read.get());
        row.isSent = true; // a failed transaction has taken the row with it
        --unsentCount;
        ++lostCount;
    }
    return false;
}

void HistoryStore::NoteSent(uint64 nowUsec)
{
    rows[cursor].isSent = true;
    rows[cursor].sentAtUsec = nowUsec;
    --unsentCount;
    ++cursor;
}

void HistoryStore::Work(uint64 nowUsec)
{
    while (!rows.empty() && rows.front().isSent && nowUsec - rows.front().sentAtUsec >= limits.retentionUsec)
    {
        RemoveFirst();
    }
    if (nowUsec >= commitAtUsec)
    {
        Commit(nowUsec);
    }
}

bool HistoryStore::Open(std::string const& path)
{
    sqlite3* opened = nullptr;
    int const flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    int const status = sqlite3_open_v2(path.c_str(), &opened, flags, nullptr);
    insert.reset(); // before the database of an earlier attempt
    read.reset();
    remove.reset();
    database.reset(opened);
    bool const isOpen = status == SQLITE_OK && Run("PRAGMA locking_mode=EXCLUSIVE") && Run("PRAGMA journal_mode=WAL") &&
                        Run("PRAGMA synchronous=FULL") &&
                        Run("CREATE TABLE IF NOT EXISTS sample(id INTEGER PRIMARY KEY, metrics BLOB NOT NULL)");
    if (isOpen)
    {
        insert = Prepare("INSERT INTO sample(id, metrics) VALUES(?, ?)");
        read = Prepare("SELECT metrics FROM sample WHERE id = ?");
        remove = Prepare("DELETE FROM sample WHERE id <= ?");
    }
    bool const isWhole = insert != nullptr && read != nullptr && remove != nullptr && LoadRows();
    if (!isWhole)
    {
        NoteFailure();
    }
    return isWhole;
}

bool HistoryStore::LoadRows()
{
    rows.clear();
    bytes = 0;
    Statement const all = Prepare("SELECT id, length(metrics) FROM sample ORDER BY id");
    int status = SQLITE_MISUSE;
    while (all != nullptr && (status = sqlite3_step(all.get())) == SQLITE_ROW)
    {
        rows.push_back(
            {sqlite3_column_int64(all.get(), 0), static_cast<uint32>(sqlite3_column_int64(all.get(), 1)), false, 0});
        bytes += rows.back().size + ROW_BYTES;
        lastId = rows.back().id;
    }
    unsentCount = rows.size();
    return status == SQLITE_DONE;
}

bool HistoryStore::Run(char const* sql)
{
    return sqlite3_exec(database.get(), sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

HistoryStore::Statement HistoryStore::Prepare(char const* sql)
{
    sqlite3_stmt* made = nullptr;
    sqlite3_prepare_v2(database.get(), sql, -1, &made, nullptr);
    return Statement(made);
}

bool HistoryStore::Insert(int64 id, std::span<uint8 const> metrics)
{
    bool isDone = EnsureTransaction();
    if (isDone)
    {
        sqlite3_bind_int64(insert.get(), 1, id);
        sqlite3_bind_blob64(insert.get(), 2, metrics.data(), metrics.size(), SQLITE_STATIC);
        isDone = sqlite3_step(insert.get()) == SQLITE_DONE;
    }
    if (!isDone)
    {
        NoteFailure();
    }
    sqlite3_reset(insert.get());
    sqlite3_clear_bindings(insert.get());
    return isDone;
}

/// Some failures roll the transaction back; the next change then begins a new one.
bool HistoryStore::EnsureTransaction()
{
    return sqlite3_get_autocommit(database.get()) == 0 || Run("BEGIN");
}

void HistoryStore::RemoveFirst()
{
    Row const& first = rows.front();
    bytes -= first.size + ROW_BYTES;
    removedUpTo = first.id;
    if (!first.isSent)
    {
        --unsentCount;
        ++lostCount;
    }
    rows.pop_front();
    cursor -= cursor > 0 ? 1 : 0;
}

void HistoryStore::Commit(uint64 nowUsec)
{
    commitAtUsec = nowUsec + COMMIT_USEC;
    bool isWhole = true;
    if (removedUpTo != 0 && EnsureTransaction())
    {
        sqlite3_bind_int64(remove.get(), 1, removedUpTo);
        isWhole = sqlite3_step(remove.get()) == SQLITE_DONE;
        sqlite3_reset(remove.get());
        removedUpTo = isWhole ? 0 : removedUpTo;
    }
    if (sqlite3_get_autocommit(database.get()) == 0)
    {
        isWhole = Run("COMMIT") && isWhole;
        failure = isWhole && !isFallback ? "" : failure;
    }
    if (!isWhole)
    {
        NoteFailure();
    }
}

void HistoryStore::NoteFailure()
{
    failure = shownPath + ": " + sqlite3_errmsg(database.get());
}

void HistoryStore::DatabaseCloser::operator()(sqlite3* closed) const
{
    sqlite3_close(closed);
}

void HistoryStore::StatementCloser::operator()(sqlite3_stmt* closed) const
{
    sqlite3_finalize(closed);
}

} // namespace SparkplugMqtt
