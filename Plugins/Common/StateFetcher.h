#pragma once

#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultScannerStateRegisterBlock.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultSystemStateRegisterBlock.h"
#include "wApi/wMutex.h"
#include "wApi/wThread.h"
#include "wApi/wTypes.h"

#include <string>

namespace ZuCommon
{
class ProblemsManager;
}

namespace ZuControl
{
class IControlDataCache;
}

namespace PluginCommon
{

/// Keeps recent values of the system and scanner state. Its own thread fetches them, so readers never wait for slow
/// sources.
///
/// It fetches while clients are connected and `Latest` was called within the last two seconds; otherwise it rests.
/// After a rest, `Latest` waits until the first fetch has ended, at most FIRST_WAIT_USEC. If a fetch fails, the last
/// value is kept.
///
/// Threads: any thread may call, except that only one thread at a time may call `Start` and `Stop`.
class StateFetcher final
{
public:
    static constexpr uint64 PERIOD_USEC = 50'000; ///< a value is at most 100 ms old while the sources answer
    static constexpr uint64 REST_AFTER_USEC = 2'000'000;
    static constexpr uint64 FIRST_WAIT_USEC = 50'000;

    using SystemState = ZuControl::ControlProtocol::DefaultSystemStateRegisterBlock::DefaultSystemStateData;
    using ScannerState = ZuControl::ControlProtocol::DefaultScannerStateRegisterBlock::DefaultScannerStateData;

    struct State
    {
        SystemState system{};
        ScannerState scanner{};
    };

    /// The cache and the problems outlive the object.
    StateFetcher(std::string usedThreadName, ZuControl::IControlDataCache& usedDataCache,
                 ZuCommon::ProblemsManager& usedProblems);
    ~StateFetcher(); ///< stops
    StateFetcher(StateFetcher const&) = delete;
    StateFetcher& operator=(StateFetcher const&) = delete;

    /// Starts the thread. Throws `Zu::Status::WRONG_STATE` while it runs.
    void Start();

    /// Ends the thread after a running fetch. Does nothing if the thread does not run.
    void Stop() noexcept;

    /// Says whether clients are connected. Without clients nothing is fetched. The first client starts fetching before
    /// its first request.
    void SetHasClients(bool newHasClients);

    /// Returns the latest state. `wantedScannerId` selects the scanner from now on; empty selects the first one.
    State Latest(std::string const& wantedScannerId);

private:
    static int Run(void* argument);
    void FetchWhileWanted();
    void Fetch(std::string const& fetchedScannerId);
    void FetchSystem();
    void FetchScanner(std::string const& fetchedScannerId);
    bool IsWanted() const ZU_REQUIRES(lock);
    void NoteFailure(bool& isFailing, char const* what);

    std::string const threadName;
    ZuControl::IControlDataCache& dataCache;
    ZuCommon::ProblemsManager& problems;

    // A leaf, which no fetch holds. Guards all members down to isStopping.
    Zu::Mutex lock;
    Zu::CondVar changed;
    State state ZU_GUARDED_BY(lock);
    std::string scannerId ZU_GUARDED_BY(lock);
    uint64 lastQuestionUsec ZU_GUARDED_BY(lock) = 0;
    bool hasClients ZU_GUARDED_BY(lock) = false;
    bool isResting ZU_GUARDED_BY(lock) = true; // until the first fetch after a rest has ended
    bool isStopping ZU_GUARDED_BY(lock) = false;

    // Used on the thread only: the last fetch failed, so a lasting failure is logged once.
    bool isSystemFailing = false;
    bool isScannerFailing = false;
    bool isStarted = false; // used by the thread that starts and stops
    wThread thread;
};

} // namespace PluginCommon
