#pragma once

#include "wApi/wTypes.h"

#include <cstddef>
#include <deque>
#include <memory>
#include <span>
#include <string>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace SparkplugMqtt
{

/// Keeps samples until they have certainly arrived. Messages are not acknowledged; a sample has arrived if the
/// connection stayed whole for the retention time after it was sent.
///
/// The samples are in the SQLite file "sparkplug.db" of a folder. `Work` commits them once in COMMIT_USEC: a power cut
/// costs the samples since then. Without a folder, and if the file cannot be used, they are in memory. When the store is
/// full, the oldest samples go first.
///
/// Threads: one thread calls all operations. They may block for as long as the disk does.
class HistoryStore final
{
public:
    static constexpr uint64 COMMIT_USEC = 500'000;
    static constexpr char const* FILE_NAME = "sparkplug.db";

    struct Limits
    {
        uint64 mostBytes = 0;     ///< of the samples, each with ROW_BYTES
        uint64 retentionUsec = 0; ///< how long a sent sample is kept
    };

    static constexpr uint64 ROW_BYTES = 64; ///< what a sample takes beside its bytes

    /// Opens or makes the file; its samples count as not sent. An empty folder means memory. Does not throw for a file
    /// that cannot be used: see `Failure`.
    HistoryStore(std::string const& folder, Limits newLimits);
    ~HistoryStore(); ///< commits
    HistoryStore(HistoryStore const&) = delete;
    HistoryStore& operator=(HistoryStore const&) = delete;

    /// Adds a sample. `isSent`: it has just been sent.
    void Add(std::span<uint8 const> metrics, bool isSent, uint64 nowUsec);

    /// The connection is gone: all samples of the store may not have arrived, and count as not sent.
    void LinkLost();

    /// The oldest sample that is not sent. Returns false if there is none.
    bool ReadUnsent(std::vector<uint8>& metrics);

    /// The sample of the last `ReadUnsent` has been sent.
    void NoteSent(uint64 nowUsec);

    /// Removes samples that have arrived, and commits if it is time.
    void Work(uint64 nowUsec);

    uint64 Count() const
    {
        return rows.size();
    }

    uint64 Bytes() const
    {
        return bytes;
    }

    uint64 UnsentCount() const
    {
        return unsentCount;
    }

    /// Samples that were removed, or could not be kept, before they were sent.
    uint64 LostCount() const
    {
        return lostCount;
    }

    /// Why samples are not on the disk; empty if they are, or if there is no folder.
    std::string const& Failure() const
    {
        return failure;
    }

private:
    struct Row
    {
        int64 id = 0;
        uint32 size = 0;
        bool isSent = false;
        uint64 sentAtUsec = 0;
    };

    struct DatabaseCloser
    {
        void operator()(sqlite3* closed) const;
    };

    struct StatementCloser
    {
        void operator()(sqlite3_stmt* closed) const;
    };

    using Statement = std::unique_ptr<sqlite3_stmt, StatementCloser>;

    bool Open(std::string const& path);
    bool LoadRows();
    bool Run(char const* sql);
    Statement Prepare(char const* sql);
    bool Insert(int64 id, std::span<uint8 const> metrics);
    bool EnsureTransaction();
    void RemoveFirst();
    void Commit(uint64 nowUsec);
    void NoteFailure();

    Limits const limits;
    std::string const shownPath;
    std::string failure;
    bool isFallback = false; // the file cannot be used, and the samples are in memory
    std::unique_ptr<sqlite3, DatabaseCloser> database;
    Statement insert; // these end before the database
    Statement read;
    Statement remove;
    std::deque<Row> rows;   // in the order of their ids
    std::size_t cursor = 0; // no row before it is unsent
    int64 lastId = 0;
    int64 removedUpTo = 0; // rows up to this id are no longer in `rows`, but perhaps in the file
    uint64 bytes = 0;
    uint64 unsentCount = 0;
    uint64 lostCount = 0;
    uint64 commitAtUsec = 0;
};

} // namespace SparkplugMqtt
