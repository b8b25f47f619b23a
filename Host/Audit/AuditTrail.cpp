#include "Host/Audit/AuditTrail.h"

#include "Host/Audit/TrailText.h"
#include "Host/Store/DataFolder.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "ZuApi/Logging.h"
#include "wApi/wTime.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <iterator>
#include <utility>

namespace ZuHost
{

namespace
{

using Json = nlohmann::json;

constexpr uint64 PERIOD_USEC = 1'000'000; // of the looks at the clock, and of the attempts to write
constexpr std::size_t SHOWN_HASH_DIGITS = 16;

TrailRecord RecordOf(TrailEntry entry)
{
    TrailRecord record;
    record.timeUsec =
        std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::system_clock::now().time_since_epoch())
            .count();
    record.monotonicUsec = wTime_NowUsec();
    record.entry = std::move(entry);
    return record;
}

TrailRecord NoteOf(char const* what, Json const& after)
{
    return RecordOf({"host", "", what, "", after.dump(), "done"});
}

TrailEntry Bounded(TrailEntry entry)
{
    entry.who = TrailText::Name(entry.who);
    entry.from = TrailText::Name(entry.from);
    entry.what = TrailText::Name(entry.what);
    entry.result = TrailText::Name(entry.result);
    entry.before = TrailText::Parameters(entry.before);
    entry.after = TrailText::Parameters(entry.after);
    return entry;
}

/// Entries with the same key may be gathered.
std::string KeyOf(TrailEntry const& entry)
{
    constexpr char SEPARATOR = '\0'; // in no text: the texts are printable
    std::string key = entry.who + SEPARATOR + entry.from + SEPARATOR + entry.what + SEPARATOR + entry.result;
    return entry.comesInBursts ? key : key + SEPARATOR + entry.before + SEPARATOR + entry.after;
}

/// "user anna (https 192.0.2.7): PUT /controls/ModbusTcp: {"port":502} -> {"port":1502}: 200"
std::string LineOf(TrailRecord const& record)
{
    TrailEntry const& entry = record.entry;
    std::string line = entry.who;
    line += entry.from.empty() ? "" : " (" + entry.from + ")";
    line += ": " + entry.what;
    if (!entry.before.empty() || !entry.after.empty())
    {
        line += ": " + entry.before + (entry.before.empty() ? "" : " -> ") + entry.after;
    }
    line += ": " + entry.result;
    return record.count == 1 ? line : line + ", " + std::to_string(record.count) + " times";
}

void LogWritten(TrailRecord const& record)
{
    ZU_LOG_USER_INFO("Trail %1$s: %2$s [%3$s]", std::to_string(record.id).c_str(), LineOf(record).c_str(),
                     record.hash.substr(0, SHOWN_HASH_DIGITS).c_str());
}

void LogUnwritten(TrailRecord const& record)
{
    ZU_LOG_USER_ERROR("Trail, not on the disk: %1$s", LineOf(record).c_str());
}

} // namespace

AuditTrail::AuditTrail(DataFolder const& usedFolder, TrailLimits const& limits, ClockWatch::Read readClock)
    : folder(usedFolder), file(usedFolder.TrailFile(), limits)
{
    if (readClock)
    {
        clockWatch.emplace(*this, std::move(readClock));
    }
    ZU_CHECK(wThread_Construct(&thread));
    ZU_CHECK(wThread_SetName(thread, "AuditTrail"));
    ZU_CHECK(wThread_Start(thread, &AuditTrail::Main, this));
}

AuditTrail::~AuditTrail()
{
    {
        Zu::MutexLock const guard(lock);
        isEnding = true;
    }
    wake.NotifyAll();
    wThread_Join(thread, wTIMEOUT_INFINITE, nullptr);
}

void AuditTrail::Note(TrailEntry entry) noexcept
{
    try
    {
        TrailRecord record = RecordOf(Bounded(std::move(entry))); // in the caller's thread: the queue is bounded
        Zu::MutexLock const guard(lock);
        if (!Gather(record))
        {
            Queue(std::move(record));
        }
        wake.NotifyOne();
    }
    catch (...) // no memory
    {
        Zu::MutexLock const guard(lock);
        ++lost;
    }
}

std::vector<TrailRecord> AuditTrail::Read(TrailFilter const& filter) const
{
    return file.Read(filter);
}

int64 AuditTrail::LastId() const
{
    return file.LastId();
}

std::set<std::string> AuditTrail::Faults() const
{
    Zu::MutexLock const guard(lock);
    std::set<std::string> sentences;
    for (std::string const* const sentence : {&fault, &chainFault})
    {
        if (!sentence->empty())
        {
            sentences.insert(*sentence);
        }
    }
    return sentences;
}

int AuditTrail::Main(void* argument)
{
    static_cast<AuditTrail*>(argument)->Run();
    return 1;
}

void AuditTrail::Run()
{
    CheckChain();
    for (bool isLast = false; !isLast;)
    {
        ZU_GUARD_BOUNDARY([&] {
            std::vector<TrailRecord> due = TakeDue(isLast);
            hasBegun = hasBegun || !due.empty();
            if (clockWatch.has_value() && hasBegun && !isLast)
            {
                clockWatch->Look(); // its entries come behind the first of all, the start of the host
            }
            Write(std::move(due), isLast);
        });
    }
}

/// A broken chain is a fault until the host starts with another file.
void AuditTrail::CheckChain()
{
    try
    {
        std::string const found = file.Check().fault;
        if (!found.empty())
        {
            Zu::MutexLock const guard(lock);
            chainFault = "The trail in '" + folder.TrailFile().filename().string() +
                         "' was changed by another program: " + found +
                         ". Keep a copy of the file, and move it away while the host does not run.";
        }
    }
    catch (std::exception const&) // no file yet, or a damaged one, which the first write replaces
    {
    }
}

/// Waits for entries, at most for a period. `isLast` tells that there will be no more.
std::vector<TrailRecord> AuditTrail::TakeDue(bool& isLast)
{
    Zu::MutexLock const guard(lock);
    wake.WaitUntil(lock, wTime_AfterUsec(PERIOD_USEC),
                   [this]() ZU_REQUIRES(lock) { return isEnding || !waiting.empty(); });
    isLast = isEnding;
    EndWindows(wTime_NowUsec(), isEnding);
    std::vector<TrailRecord> due(std::move_iterator(waiting.begin()), std::move_iterator(waiting.end()));
    waiting.clear();
    return due;
}

/// Queues what was gathered since the begin of each window that is over.
void AuditTrail::EndWindows(uint64 nowUsec, bool endsAll)
{
    for (auto window = recent.begin(); window != recent.end();)
    {
        Recent& kind = window->second;
        if (!endsAll && nowUsec - kind.sinceUsec < GATHER_USEC)
        {
            ++window;
            continue;
        }
        if (!kind.gathered.has_value())
        {
            window = recent.erase(window);
            continue;
        }
        Queue(std::move(*kind.gathered));
        kind = {nowUsec, std::nullopt}; // the burst may go on
        ++window;
    }
}

/// Returns true if the record was added to those of its kind. Else the record is to be queued.
bool AuditTrail::Gather(TrailRecord& record)
{
    std::string key = KeyOf(record.entry);
    auto const found = recent.find(key);
    if (found == recent.end())
    {
        if (recent.size() < MAX_RECENT)
        {
            recent.emplace(std::move(key), Recent{record.monotonicUsec, std::nullopt});
        }
        return false;
    }
    std::optional<TrailRecord>& gathered = found->second.gathered;
    if (gathered.has_value())
    {
        record.count = gathered->count + 1;
        record.entry.before = std::move(gathered->entry.before); // from the first to the last
    }
    gathered = std::move(record);
    return true;
}

void AuditTrail::Queue(TrailRecord record)
{
    if (waiting.size() >= MAX_WAITING)
    {
        LogUnwritten(record);
        ++lost;
        return;
    }
    waiting.push_back(std::move(record));
}

/// Writes the records and those that are held. If that fails, they stay held, and each is a line of the log.
void AuditTrail::Write(std::vector<TrailRecord> due, bool isLast)
{
    std::move(due.begin(), due.end(), std::back_inserter(held));
    bool const isFaulty = faultSinceUsec != 0;
    if (held.empty() && !isFaulty)
    {
        return;
    }
    bool const isTooEarly = isFaulty && !isLast && wTime_NowUsec() < nextTryUsec;
    std::string const failure = isTooEarly ? std::string() : TryToWrite();
    if (isTooEarly || !failure.empty())
    {
        Hold(failure);
    }
}

/// Returns why the file cannot be written; empty if all is on the disk.
std::string AuditTrail::TryToWrite()
{
    try
    {
        WriteOut();
        return {};
    }
    catch (Zu::Exception const& exception)
    {
        if (exception.Status() != Zu::Status::BAD_FORMAT)
        {
            return exception.what();
        }
        damage = exception.what();
    }
    catch (std::exception const& exception)
    {
        return exception.what();
    }
    try
    {
        ReplaceDamaged();
        WriteOut();
        return {};
    }
    catch (std::exception const& exception)
    {
        return exception.what();
    }
}

void AuditTrail::WriteOut()
{
    uint64 lostNow = 0;
    {
        Zu::MutexLock const guard(lock);
        lostNow = lost;
    }
    std::vector<TrailRecord> records = Notes(lostNow + heldLost);
    std::size_t const firstToLog[] = {records.size(), records.size() + loggedCount};
    records.insert(records.end(), held.begin(), held.end());
    file.Append(records);
    for (std::size_t i = 0; i < records.size(); ++i)
    {
        if (i < firstToLog[0] || i >= firstToLog[1]) // the others are in the log already
        {
            LogWritten(records[i]);
        }
    }
    held.clear();
    loggedCount = 0;
    heldLost = 0;
    faultSinceUsec = 0;
    replacedFile.clear();
    isLastRunChecked = true;
    Zu::MutexLock const guard(lock);
    lost -= lostNow;
    fault.clear();
}

/// Entries of the trail about itself, which come before those that are held.
std::vector<TrailRecord> AuditTrail::Notes(uint64 lostNow)
{
    std::vector<TrailRecord> notes;
    if (!replacedFile.empty())
    {
        notes.push_back(NoteOf("trail replaced", {{"kept", replacedFile}, {"reason", damage}}));
    }
    std::optional<TrailRecord> const lastRun = isLastRunChecked ? std::nullopt : file.LastOf("start", "stop");
    if (lastRun.has_value() && lastRun->entry.what == "start")
    {
        notes.push_back(NoteOf("end without stop", {{"started", lastRun->time}}));
    }
    if (faultSinceUsec != 0 || lostNow != 0)
    {
        Json about{{"late", loggedCount}, {"inLogOnly", lostNow}};
        if (faultSinceUsec != 0)
        {
            about.update({{"since", TrailText::TimeOf(faultSinceUsec)}, {"reason", lastFailure}});
        }
        notes.push_back(NoteOf("trail interrupted", about));
    }
    return notes;
}

/// Logs the held records that are new, and sets the fault. `failure` is empty if the file was not tried.
void AuditTrail::Hold(std::string const& failure)
{
    for (std::size_t i = loggedCount; i < held.size(); ++i)
    {
        LogUnwritten(held[i]);
    }
    if (held.size() > MAX_WAITING)
    {
        heldLost += held.size() - MAX_WAITING;
        held.resize(MAX_WAITING);
    }
    loggedCount = held.size();
    if (failure.empty())
    {
        return;
    }
    nextTryUsec = wTime_AfterUsec(PERIOD_USEC);
    lastFailure = failure;
    faultSinceUsec = faultSinceUsec == 0 ? RecordOf({}).timeUsec : faultSinceUsec;
    Zu::MutexLock const guard(lock);
    fault = "The trail cannot be written, its entries go to the log: " + failure +
            ". This lasts until the file can be written again.";
}

/// Gives the damaged file another name, so that the next write begins a new one.
void AuditTrail::ReplaceDamaged()
{
    std::filesystem::path const path = folder.TrailFile();
    replacedFile = folder.KeepDamaged(path).filename().string();
    folder.Remove(path);
    ZU_LOG_USER_ERROR("The trail was damaged (%1$s). It is kept as %2$s, and a new one begins", damage.c_str(),
                      replacedFile.c_str());
}

} // namespace ZuHost
