#include "Plugins/Common/StateFetcher.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "ZuCommon/Problems.h"
#include "ZuControl/Control/IControlDataCache.h"
#include "wApi/wMutex.h"
#include "wApi/wTime.h"

#include <algorithm>
#include <cstring>

namespace PluginCommon
{

namespace
{

constexpr uint64 FETCH_TIMEOUT_USEC = 20'000; // for each of the two fetches

template <typename Number>
uint8 CutTo255(Number value)
{
    return static_cast<uint8>(std::min<uint64>(value, 255));
}

} // namespace

StateFetcher::StateFetcher(std::string usedThreadName, ZuControl::IControlDataCache& usedDataCache,
                           ZuCommon::ProblemsManager& usedProblems)
    : threadName(std::move(usedThreadName)), dataCache(usedDataCache), problems(usedProblems)
{
}

StateFetcher::~StateFetcher()
{
    Stop();
}

void StateFetcher::Start()
{
    if (isStarted)
    {
        ZU_THROW(Zu::Status::WRONG_STATE);
    }
    {
        Zu::MutexLock const guard(lock);
        isStopping = false;
        isResting = true;
    }
    ZU_CHECK(wThread_Construct(&thread));
    ZU_CHECK(wThread_SetName(thread, threadName.c_str()));
    ZU_CHECK(wThread_Start(thread, &StateFetcher::Run, this));
    isStarted = true;
}

void StateFetcher::Stop() noexcept
{
    if (!isStarted)
    {
        return;
    }
    ZU_GUARD_BOUNDARY([this] {
        {
            Zu::MutexLock const guard(lock);
            isStopping = true;
        }
        changed.NotifyAll();
        ZU_CHECK(wThread_Destroy(&thread));
    });
    isStarted = false;
}

void StateFetcher::SetHasClients(bool newHasClients)
{
    {
        Zu::MutexLock const guard(lock);
        lastQuestionUsec = newHasClients && !hasClients ? wTime_NowUsec() : lastQuestionUsec; // it will ask soon
        hasClients = newHasClients;
    }
    changed.NotifyAll();
}

StateFetcher::State StateFetcher::Latest(std::string const& wantedScannerId)
{
    Zu::MutexLock guard(lock);
    scannerId = wantedScannerId;
    lastQuestionUsec = wTime_NowUsec();
    if (isResting && hasClients && !isStopping)
    {
        changed.NotifyAll();
        changed.WaitUntil(lock, wTime_AfterUsec(FIRST_WAIT_USEC), [this]() ZU_REQUIRES(lock) {
            return !isResting || isStopping; // the end of one fetch suffices, even a failed one
        });
    }
    return state;
}

int StateFetcher::Run(void* argument)
{
    auto& fetcher = *static_cast<StateFetcher*>(argument);
    ZU_GUARD_BOUNDARY([&fetcher] { fetcher.FetchWhileWanted(); });
    return 1;
}

void StateFetcher::FetchWhileWanted()
{
    Zu::MutexLock guard(lock);
    while (!isStopping)
    {
        if (!IsWanted())
        {
            isResting = true;
            changed.WaitUntil(lock, wTIMEOUT_INFINITE, [this]() ZU_REQUIRES(lock) { return isStopping || IsWanted(); });
            continue;
        }
        std::string const wantedScanner = scannerId;
        guard.Unlock();
        Fetch(wantedScanner);
        guard.Lock();
        isResting = false;
        changed.NotifyAll();
        changed.WaitUntil(lock, wTime_AfterUsec(PERIOD_USEC), [this]() ZU_REQUIRES(lock) { return isStopping; });
    }
}

void StateFetcher::Fetch(std::string const& fetchedScannerId)
{
    FetchSystem();
    FetchScanner(fetchedScannerId);
}

void StateFetcher::FetchSystem()
{
    try
    {
        auto const stats = dataCache.SystemStats(FETCH_TIMEOUT_USEC);
        SystemState fetched{};
        fetched.value64 = stats.upTime;
        fetched.stateByte0 = static_cast<uint8>(stats.runState);
        fetched.stateByte2 = stats.linkStatus.empty() ? uint8{0} : CutTo255(stats.linkStatus.front());
        fetched.stateByte3 = CutTo255(problems.Count());
        std::size_t const length = std::min(stats.loadedJob.size(), sizeof fetched.jobFileName);
        std::memcpy(fetched.jobFileName, stats.loadedJob.data(), length);
        fetched.jobFileNameLength = static_cast<uint8>(length); // at most 64
        isSystemFailing = false;
        Zu::MutexLock const guard(lock);
        state.system = fetched;
    }
    catch (...)
    {
        NoteFailure(isSystemFailing, "system");
    }
}

void StateFetcher::FetchScanner(std::string const& fetchedScannerId)
{
    try
    {
        auto const info = dataCache.ScannerInfo(fetchedScannerId, FETCH_TIMEOUT_USEC);
        ScannerState fetched{};
        fetched.scannerByte0 = static_cast<uint8>(info.alignmentState);
        fetched.scannerByte1 = info.laserEnabled ? uint8{1} : uint8{0};
        fetched.encoderValue = info.currentEncoderValue;
        fetched.syncTime = info.currentSyncTime;
        isScannerFailing = false;
        Zu::MutexLock const guard(lock);
        state.scanner = fetched;
    }
    catch (...)
    {
        NoteFailure(isScannerFailing, "scanner");
    }
}

bool StateFetcher::IsWanted() const
{
    return hasClients && wTime_NowUsec() - lastQuestionUsec < REST_AFTER_USEC;
}

void StateFetcher::NoteFailure(bool& isFailing, char const* what)
{
    if (Zu::CaughtStatus() == Zu::Status::BUSY || isFailing)
    {
        return; // BUSY: another protocol fetches at this moment
    }
    isFailing = true;
    ZU_LOG_CAUGHT("Unable to fetch the state of the %s", what);
}

} // namespace PluginCommon
