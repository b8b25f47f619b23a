#include "Host/Audit/TrailFile.h"

#include "Host/Audit/Sha256.h"
#include "Host/Audit/TrailText.h"
#include "Host/Store/SqliteFile.h"
#include "ZuApi/Exception.h"
#include "wApi/wTime.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace ZuHost
{

namespace
{

using Json = nlohmann::json;

constexpr char const* SCHEMA = "CREATE TABLE IF NOT EXISTS trail (id INTEGER PRIMARY KEY AUTOINCREMENT, "
                               "time TEXT NOT NULL, monotonic INTEGER NOT NULL, who TEXT NOT NULL, "
                               "origin TEXT NOT NULL, what TEXT NOT NULL, before TEXT NOT NULL, after TEXT NOT NULL, "
                               "result TEXT NOT NULL, count INTEGER NOT NULL, hash TEXT NOT NULL)";
constexpr char const* COLUMNS =
    "SELECT id, time, monotonic, who, origin, what, before, after, result, count, hash FROM trail ";
constexpr std::size_t CHECKED_AT_ONCE = 1'000;
constexpr uint64 AGE_CHECK_USEC = 3'600'000'000; // a clock that is wrong for a while costs one cut only
constexpr int64 USEC_PER_DAY = 86'400'000'000;
constexpr char const* CUT = "trail cut";

int64 RealTimeUsec()
{
    auto const now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

std::string const& FirstHash()
{
    static std::string const zeros(64, '0');
    return zeros;
}

TrailRecord RecordOf(SqliteStatement const& row)
{
    auto const text = [&row](int column) { return std::string(row.Bytes(column)); };
    TrailRecord record;
    record.id = row.Number(0);
    record.time = text(1);
    record.monotonicUsec = static_cast<uint64>(row.Number(2));
    record.entry = {text(3), text(4), text(5), text(6), text(7), text(8)};
    record.count = static_cast<uint64>(row.Number(9));
    record.hash = text(10);
    return record;
}

std::vector<TrailRecord> RowsOf(SqliteStatement& statement)
{
    std::vector<TrailRecord> records;
    while (statement.Step())
    {
        records.push_back(RecordOf(statement));
    }
    return records;
}

int64 NumberOf(SqliteFile const& file, char const* query)
{
    SqliteStatement statement(file, query);
    return statement.Step() ? statement.Number(0) : 0;
}

bool HasTable(SqliteFile const& file)
{
    return NumberOf(file, "SELECT COUNT(*) FROM sqlite_schema WHERE name = 'trail'") == 1;
}

/// The hash that the chain of the remaining entries begins with: the one that the last cut has noted.
std::optional<std::string> HashBefore(SqliteFile const& file, int64 firstId)
{
    if (firstId <= 1)
    {
        return FirstHash();
    }
    SqliteStatement statement(file, std::string(COLUMNS) + "WHERE who = 'host' AND what = ? ORDER BY id DESC LIMIT 1");
    statement.BindText(1, CUT);
    if (!statement.Step())
    {
        return std::nullopt;
    }
    Json const cut = Json::parse(RecordOf(statement).entry.after, nullptr, false);
    bool const fits = cut.is_object() && cut.value("lastId", Json()) == firstId - 1 && cut.contains("lastHash") &&
                      cut["lastHash"].is_string();
    return fits ? std::optional(cut["lastHash"].get<std::string>()) : std::nullopt;
}

std::string Missing(int64 first, int64 last)
{
    return first == last ? "Entry " + std::to_string(first) + " is missing"
                         : "The entries " + std::to_string(first) + " to " + std::to_string(last) + " are missing";
}

} // namespace

/// One transaction on the file.
class TrailFile::Writer final
{
public:
    explicit Writer(SqliteFile& usedFile)
        : file(usedFile),
          insert(file, "INSERT INTO trail (id, time, monotonic, who, origin, what, before, after, result, count, hash) "
                       "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)")
    {
        SqliteStatement newest(file, "SELECT id, hash FROM trail ORDER BY id DESC LIMIT 1");
        if (newest.Step())
        {
            end = {newest.Number(0), std::string(newest.Bytes(1))};
        }
    }

    End const& NewEnd() const
    {
        return end;
    }

    void Add(TrailRecord& record)
    {
        record.id = end.id + 1;
        record.time = TrailText::TimeOf(record.timeUsec);
        record.hash = HashOf(end.id == 0 ? FirstHash() : end.hash, record);
        insert.Reset();
        insert.BindNumber(1, record.id);
        insert.BindNumber(3, static_cast<int64>(record.monotonicUsec));
        insert.BindNumber(10, static_cast<int64>(record.count));
        int parameter = 4;
        TrailEntry const& entry = record.entry;
        for (std::string const* const text :
             {&entry.who, &entry.from, &entry.what, &entry.before, &entry.after, &entry.result})
        {
            insert.BindText(parameter++, *text);
        }
        insert.BindText(2, record.time);
        insert.BindText(11, record.hash);
        insert.Step();
        end = {record.id, record.hash};
    }

    void AddNote(char const* what, Json const& before, Json const& after)
    {
        TrailRecord note;
        note.timeUsec = RealTimeUsec();
        note.monotonicUsec = wTime_NowUsec();
        note.entry = {"host", "", what, before.is_null() ? "" : before.dump(), after.dump(), "done"};
        Add(note);
    }

    /// The number of the newest entry that is beyond the limits; 0 if there is none. The newest entry stays.
    int64 LastToCut(TrailLimits const& limits, bool checksAge) const
    {
        int64 const first = NumberOf(file, "SELECT MIN(id) FROM trail");
        int64 const pages = NumberOf(file, "PRAGMA page_count") - NumberOf(file, "PRAGMA freelist_count");
        int64 const bytes = pages * NumberOf(file, "PRAGMA page_size");
        int64 const step = first + static_cast<int64>(limits.cutEntries) - 1;
        int64 last = 0;
        if (int64 const excess = end.id - first + 1 - static_cast<int64>(limits.entries); excess > 0)
        {
            last = std::max(step, first + excess - 1);
        }
        if (bytes > static_cast<int64>(limits.bytes))
        {
            last = std::max(last, step);
        }
        if (checksAge)
        {
            std::string const oldest =
                TrailText::TimeOf(RealTimeUsec() - static_cast<int64>(limits.days) * USEC_PER_DAY);
            SqliteStatement old(file, "SELECT MAX(id) FROM trail WHERE id <= ? AND time < ?");
            old.BindNumber(1, step);
            old.BindText(2, oldest);
            last = std::max(last, old.Step() ? old.Number(0) : 0);
        }
        return std::min(last, end.id - 1);
    }

    void Cut(int64 lastId)
    {
        SqliteStatement hash(file, "SELECT hash, (SELECT COUNT(*) FROM trail WHERE id <= ?) FROM trail WHERE id = ?");
        hash.BindNumber(1, lastId);
        hash.BindNumber(2, lastId);
        Json note{{"lastId", lastId}, {"lastHash", ""}, {"entries", 0}};
        if (hash.Step())
        {
            note["lastHash"] = std::string(hash.Bytes(0));
            note["entries"] = hash.Number(1);
        }
        SqliteStatement remove(file, "DELETE FROM trail WHERE id <= ?");
        remove.BindNumber(1, lastId);
        remove.Step();
        AddNote(CUT, nullptr, note);
    }

private:
    SqliteFile& file;
    SqliteStatement insert;
    End end;
};

TrailFile::TrailFile(std::filesystem::path newPath, TrailLimits const& newLimits)
    : path(std::move(newPath)), limits(newLimits)
{
}

void TrailFile::Append(std::vector<TrailRecord>& records)
{
    // SQLite would give a new file the mode of the process, and the journal has the mode of the file.
    if (int const made = open(path.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, S_IRUSR | S_IWUSR); made >= 0)
    {
        close(made);
    }
    SqliteFile file(path, SqliteFile::Access::CREATE);
    file.Run("BEGIN IMMEDIATE");
    file.Run(SCHEMA);
    bool const checksAge = wTime_NowUsec() >= nextAgeCheckUsec;
    End newEnd;
    {
        Writer writer(file);
        if (End const& found = writer.NewEnd();
            written.id != 0 && (found.id != written.id || found.hash != written.hash))
        {
            writer.AddNote("trail changed from outside", {{"lastId", written.id}, {"lastHash", written.hash}},
                           {{"lastId", found.id}, {"lastHash", found.hash}});
        }
        for (TrailRecord& record : records)
        {
            writer.Add(record);
        }
        if (int64 const last = writer.LastToCut(limits, checksAge); last > 0)
        {
            writer.Cut(last);
        }
        newEnd = writer.NewEnd();
    }
    file.Run("COMMIT");
    written = std::move(newEnd);
    nextAgeCheckUsec = checksAge ? wTime_AfterUsec(AGE_CHECK_USEC) : nextAgeCheckUsec;
}

std::vector<TrailRecord> TrailFile::Read(TrailFilter const& filter) const
{
    std::error_code error;
    if (!std::filesystem::exists(path, error))
    {
        return {};
    }
    SqliteFile const file(path, SqliteFile::Access::READ);
    if (!HasTable(file))
    {
        return {};
    }
    std::string query = std::string(COLUMNS) + "WHERE id > ?";
    std::vector<std::string const*> texts;
    auto const add = [&](std::string const& text, char const* condition) {
        if (!text.empty())
        {
            query += condition;
            texts.push_back(&text);
        }
    };
    add(filter.who, " AND who = ?");
    add(filter.from, " AND instr(origin, ?) > 0");
    add(filter.what, " AND instr(what, ?) > 0");
    add(filter.since, " AND time >= ?");
    add(filter.until, " AND time < ?");
    SqliteStatement statement(file, query + " ORDER BY id LIMIT ?");
    int parameter = 1;
    statement.BindNumber(parameter++, filter.after);
    for (std::string const* const text : texts)
    {
        statement.BindText(parameter++, *text);
    }
    statement.BindNumber(parameter, static_cast<int64>(filter.limit));
    return RowsOf(statement);
}

int64 TrailFile::LastId() const
{
    std::error_code error;
    if (!std::filesystem::exists(path, error))
    {
        return 0;
    }
    SqliteFile const file(path, SqliteFile::Access::READ);
    return HasTable(file) ? NumberOf(file, "SELECT MAX(id) FROM trail") : 0;
}

std::optional<TrailRecord> TrailFile::LastOf(std::string const& first, std::string const& second) const
{
    std::error_code error;
    if (!std::filesystem::exists(path, error))
    {
        return std::nullopt;
    }
    SqliteFile const file(path, SqliteFile::Access::READ);
    if (!HasTable(file))
    {
        return std::nullopt;
    }
    SqliteStatement statement(file,
                              std::string(COLUMNS) + "WHERE who = 'host' AND what IN (?, ?) ORDER BY id DESC LIMIT 1");
    statement.BindText(1, first);
    statement.BindText(2, second);
    return statement.Step() ? std::optional(RecordOf(statement)) : std::nullopt;
}

TrailFile::Chain TrailFile::Check() const
{
    Chain chain;
    std::optional<std::string> hash;
    for (bool isAtEnd = false; !isAtEnd;)
    {
        SqliteFile const file(path, SqliteFile::Access::READ); // anew: its processor time is limited
        if (!HasTable(file))
        {
            chain.fault = "It is not the file of a trail";
            return chain;
        }
        SqliteStatement statement(file, std::string(COLUMNS) + "WHERE id > ? ORDER BY id LIMIT ?");
        statement.BindNumber(1, chain.lastId);
        statement.BindNumber(2, static_cast<int64>(CHECKED_AT_ONCE));
        std::vector<TrailRecord> const records = RowsOf(statement);
        for (TrailRecord const& record : records)
        {
            if (chain.entries == 0)
            {
                chain.firstId = record.id;
                hash = HashBefore(file, record.id);
            }
            bool const follows = chain.entries == 0 ? hash.has_value() : record.id == chain.lastId + 1;
            if (!follows)
            {
                chain.fault = Missing(chain.lastId + 1, record.id - 1);
                return chain;
            }
            if (record.hash != HashOf(*hash, record))
            {
                chain.fault = "Entry " + std::to_string(record.id) + " was changed, or the entry before it";
                return chain;
            }
            hash = record.hash;
            chain.lastId = record.id;
            ++chain.entries;
        }
        isAtEnd = records.size() < CHECKED_AT_ONCE;
        chain.lastHash = hash.value_or("");
        int64 const newest = isAtEnd ? NumberOf(file, "SELECT seq FROM sqlite_sequence WHERE name = 'trail'") : 0;
        if (newest > chain.lastId)
        {
            chain.fault = Missing(chain.lastId + 1, newest);
        }
    }
    return chain;
}

std::string TrailFile::HashOf(std::string const& previousHash, TrailRecord const& record)
{
    TrailEntry const& entry = record.entry;
    std::string text = previousHash;
    for (std::string const& field :
         {std::to_string(record.id), record.time, std::to_string(record.monotonicUsec), entry.who, entry.from,
          entry.what, entry.before, entry.after, entry.result, std::to_string(record.count)})
    {
        text.append(std::to_string(field.size())).append(":").append(field).append(",");
    }
    return Sha256Hex(text);
}

} // namespace ZuHost
