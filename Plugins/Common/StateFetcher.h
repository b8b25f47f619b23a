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

/// Keeps the state of system and scanner at hand, fetched by a thread of its own, so that who reads it never waits for where
/// it comes from.
///
/// It fetches while clients are connected and somebody has asked within the last two seconds; after a rest the first to
/// ask waits for the first fetch, for FIRST_WAIT_USEC at most. What cannot be fetched keeps its last value.
/// Threads: any; `Start` and `Stop` belong to one at a time.
class StateFetcher final
{
public:
    static constexpr uint64 PERIOD_USEC = 50'000; ///< a value is never older than 100 ms while the sources answer
    static constexpr uint64 REST_AFTER_USEC = 2'000'000;
    static constexpr uint64 FIRST_WAIT_USEC = 50'000;

    using SystemState = ZuControl::ControlProtocol::DefaultSystemStateRegisterBlock::DefaultSystemStateData;
    using ScannerState = ZuControl::ControlProtocol::DefaultScannerStateRegisterBlock::DefaultScannerStateData;

    struct State
    {
        SystemState system{};
        ScannerState scanner{};
    };

    /// Cache, problems and the name of the thread outlive the object.
    StateFetcher(char const* usedThreadName, ZuControl::IControlDataCache& usedDataCache,
                 ZuCommon::ProblemsManager& usedProblems);
    ~StateFetcher(); ///< stops
    StateFetcher(StateFetcher const&) = delete;
    StateFetcher& operator=(StateFetcher const&) = delete;

    void Start();
    void Stop() noexcept;

    /// Without clients nothing is fetched. The first one sets it going, ahead of its first question.
    void SetHasClients(bool newHasClients);

    /// What there is. `wantedScannerId` says of which scanner from now on; empty means the first one.
    State Latest(std::string const& wantedScannerId);

private:
    static int Run(void* argument);
    void FetchWhileWanted();
    void Fetch(std::string const& fetchedScannerId);
    void FetchSystem();
    void FetchScanner(std::string const& fetchedScannerId);
    bool IsWanted() const ZU_REQUIRES(lock); // under the lock
    void NoteFailure(bool& isFailing, char const* what);

    char const* const threadName;
    ZuControl::IControlDataCache& dataCache;
    ZuCommon::ProblemsManager& problems;

    // A leaf: nothing is called under it, and no fetch runs under it. Guards everything down to isStopping.
    Zu::Mutex lock;
    Zu::CondVar changed;
    State state ZU_GUARDED_BY(lock);
    std::string scannerId ZU_GUARDED_BY(lock);
    uint64 lastQuestionUsec ZU_GUARDED_BY(lock) = 0;
    bool hasClients ZU_GUARDED_BY(lock) = false;
    bool isResting ZU_GUARDED_BY(lock) = true; // until the first fetch after a rest has ended
    bool isStopping ZU_GUARDED_BY(lock) = false;

    // Of the thread: whether the last fetch failed, so that a lasting failure is told once.
    bool isSystemFailing = false;
    bool isScannerFailing = false;
    bool isStarted = false; // of who starts and stops
    wThread thread;
};

} // namespace PluginCommon
