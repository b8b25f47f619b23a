#pragma once

#include "Host/Audit/ClockWatch.h"
#include "Host/Audit/ITrail.h"
#include "Host/Audit/TrailFile.h"
#include "wApi/wMutex.h"
#include "wApi/wThread.h"

#include <deque>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ZuHost
{

class DataFolder;

/// The trail of the host: a bounded queue in memory, and the thread "AuditTrail", which writes the file.
///
/// Each entry also goes to the log. While the file cannot be written, each entry is an error line of the log; up to
/// `MAX_WAITING` entries stay in memory and are written as soon as the file can be written again. A note then tells how
/// many are missing. A damaged file gets another name, and a new one begins.
class AuditTrail final : public ITrail
{
public:
    static constexpr std::size_t MAX_WAITING = 1'000; ///< entries in memory; some ten MB at most
    static constexpr std::size_t MAX_RECENT = 256;    ///< kinds of entries that are gathered at one time
    static constexpr uint64 GATHER_USEC = 1'000'000;

    /// The folder outlives this. `readClock` is empty if the trail is not to watch the clock.
    explicit AuditTrail(DataFolder const& usedFolder, TrailLimits const& limits = {},
                        ClockWatch::Read readClock = &ClockWatch::ReadMachine);
    ~AuditTrail() override; ///< writes the waiting entries

    AuditTrail(AuditTrail const&) = delete;
    AuditTrail& operator=(AuditTrail const&) = delete;

    void Note(TrailEntry entry) noexcept override;

    /// As `TrailFile::Read` and `TrailFile::LastId`. Any thread may call.
    std::vector<TrailRecord> Read(TrailFilter const& filter) const;
    int64 LastId() const;

    /// A sentence for each fault of the trail that lasts. Any thread may call; the call does not wait for the disk.
    std::set<std::string> Faults() const;

private:
    /// Entries of one kind since the first of them was queued.
    struct Recent
    {
        uint64 sinceUsec = 0;
        std::optional<TrailRecord> gathered;
    };

    static int Main(void* argument);
    void Run();
    void CheckChain();
    std::vector<TrailRecord> TakeDue(bool& isLast);
    void EndWindows(uint64 nowUsec, bool endsAll) ZU_REQUIRES(lock);
    bool Gather(TrailRecord& record) ZU_REQUIRES(lock);
    void Queue(TrailRecord record) ZU_REQUIRES(lock);
    void Write(std::vector<TrailRecord> due, bool isLast);
    std::string TryToWrite();
    void WriteOut();
    std::vector<TrailRecord> Notes(uint64 lostNow);
    void Hold(std::string const& failure);
    void ReplaceDamaged();

    DataFolder const& folder;
    TrailFile file; // written by the thread only

    mutable Zu::Mutex lock; // a leaf, apart from the log
    Zu::CondVar wake;
    std::deque<TrailRecord> waiting ZU_GUARDED_BY(lock);
    std::map<std::string, Recent> recent ZU_GUARDED_BY(lock);
    uint64 lost ZU_GUARDED_BY(lock) = 0; // entries that found the queue full
    bool isEnding ZU_GUARDED_BY(lock) = false;
    std::string fault ZU_GUARDED_BY(lock);      // why the file cannot be written; empty if it can
    std::string chainFault ZU_GUARDED_BY(lock); // of the file at the start

    // Used by the thread only.
    std::vector<TrailRecord> held; // not written yet
    std::size_t loggedCount = 0;   // the first of them, which are in the log
    uint64 heldLost = 0;           // in the log, and not held any more
    int64 faultSinceUsec = 0;      // since 1970; 0 while the file can be written
    uint64 nextTryUsec = 0;        // of `wTime_NowUsec`
    std::string lastFailure;
    std::string replacedFile; // the new name of a damaged file, until it is noted
    std::string damage;       // why it was replaced
    bool isLastRunChecked = false;
    bool hasBegun = false; // there was an entry
    std::optional<ClockWatch> clockWatch;

    wThread thread; // last: it uses all members above
};

} // namespace ZuHost
