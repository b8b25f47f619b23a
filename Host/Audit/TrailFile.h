#pragma once

#include "Host/Audit/ITrail.h"
#include "wApi/wTypes.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace ZuHost
{

/// An entry as the file keeps it.
struct TrailRecord
{
    int64 id = 0;             ///< counts from 1 without a gap
    int64 timeUsec = 0;       ///< of the machine's clock, since 1970
    uint64 monotonicUsec = 0; ///< of `wTime_NowUsec`: goes on over steps of the clock, begins anew with the machine
    TrailEntry entry;         ///< with masked and bounded texts
    uint64 count = 1;         ///< the equal entries that this one stands for
    std::string time;         ///< `timeUsec` as text; set by the file
    std::string hash;         ///< set by the file
};

/// The bounds of the trail. The oldest entries beyond them are cut.
struct TrailLimits
{
    uint64 entries = 100'000;
    uint64 bytes = 64 * 1024 * 1024;
    uint64 days = 400;
    uint64 cutEntries = 1'000; ///< cut at once, so that not each entry brings a cut
};

/// Which entries to read. An empty text admits all.
struct TrailFilter
{
    std::string who{};
    std::string from{};  ///< a part of it
    std::string what{};  ///< a part of it
    std::string since{}; ///< a time as in the file, or its beginning: "2026-01-31"
    std::string until{}; ///< the same; entries of this time are not read
    int64 after = 0;     ///< only entries with greater numbers
    uint64 limit = 100;
};

/// The table of the trail in an SQLite file. Each call opens and closes the file: a file that was replaced, or that
/// could not be used for a time, needs nothing else.
///
/// The hash of an entry is SHA-256 over the hash of the entry before (64 zeros for the first) and the fields id, time,
/// monotonic time, who, from, what, before, after, result and count, each as "LENGTH:BYTES,". One thread writes; any
/// thread may read. Operations throw as `SqliteFile` does.
class TrailFile final
{
public:
    TrailFile(std::filesystem::path newPath, TrailLimits const& newLimits = {});

    /// Appends the entries in one transaction and cuts the oldest ones beyond the limits, which is noted as an entry.
    /// If the newest entry in the file is not the one that this object has written last, that is noted too. Sets the
    /// numbers, times and hashes of the records. The entries are on the disk when this returns.
    void Append(std::vector<TrailRecord>& records);

    /// In the order of their numbers. A file that does not exist has no entries.
    std::vector<TrailRecord> Read(TrailFilter const& filter) const;

    /// The number of the newest entry; 0 if there is none.
    int64 LastId() const;

    /// The newest of the host's entries of these names, if there is one: "start", "stop".
    std::optional<TrailRecord> LastOf(std::string const& first, std::string const& second) const;

    struct Chain
    {
        std::string fault; ///< a sentence on the first fault; empty if the chain is whole
        uint64 entries = 0;
        int64 firstId = 0;
        int64 lastId = 0;
        std::string lastHash;
    };

    /// Checks numbers and hashes of all entries. Throws `Zu::Status::NOT_FOUND` if there is no file.
    Chain Check() const;

    static std::string HashOf(std::string const& previousHash, TrailRecord const& record);

private:
    struct End
    {
        int64 id = 0;
        std::string hash;
    };

    class Writer;

    std::filesystem::path const path;
    TrailLimits const limits;
    End written;                 // the entry that was written last; 0 before the first
    uint64 nextAgeCheckUsec = 0; // of `wTime_NowUsec`
};

} // namespace ZuHost
