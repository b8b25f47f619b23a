/// Time from the start of an operation to the call of the handler for its end, compared with two bare thread hops and
/// with a new thread for each operation.
///
/// usage: OperationsBenchmark [ROUNDS]      2000 unless told otherwise
/// Figures are nanoseconds.

#include "Contest.h"
#include "Stopwatch.h"
#include "ZuControl/Control/ControlProtocolOperations.h"
#include "ZuControl/Control/IControlScanEngineInterface.h"
#include "ZuControl/Control/IControlSystemInterface.h"

#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <thread>

namespace
{

using namespace ZuBench;

constexpr auto PROTOCOL = static_cast<ZuControl::ZuEthernetProtocol>(100);

/// A system with operations that end at once.
class InstantSystem final : public ZuControl::IControlSystemInterface
{
public:
    void Start() override
    {
    }

    void Stop() override
    {
    }

    void FactoryRestore() override
    {
    }

    void Restart() override
    {
    }

    void LoadJob(std::string const& /*name*/) override
    {
    }

    void Stats(SystemStats& /*stats*/) override
    {
    }

    void SetNextIpConfig(wIpConfig const& /*config*/) override
    {
    }
};

class InstantScanner final : public ZuControl::IControlScanEngineInterface
{
public:
    void SoftwareTrigger(std::string const& /*scannerId*/) override
    {
    }

    void Alignment(std::string const& /*scannerId*/) override
    {
    }

    void ClearAlignment(std::string const& /*scannerId*/) override
    {
    }

    Zu::Event<ZuScan::AlignCompletionStatus>& AlignmentCompletedEvent(std::string const& /*scannerId*/) override
    {
        return aligned;
    }

    void ScannerInfo(std::string const& /*scannerId*/, ScannerStateInfo& /*info*/) override
    {
    }

    ZuScan::ISensor* FindSupportedSensor() override
    {
        return nullptr;
    }

private:
    Zu::Event<ZuScan::AlignCompletionStatus> aligned;
};

/// A thread that takes one job at a time.
class Hop final
{
public:
    Hop() : thread([this] { Run(); })
    {
    }

    ~Hop()
    {
        Give([this] { isEnding = true; });
        thread.join();
    }

    Hop(Hop const&) = delete;
    Hop& operator=(Hop const&) = delete;

    void Give(std::function<void()> newJob)
    {
        {
            std::scoped_lock const guard(lock);
            job = std::move(newJob);
        }
        changed.notify_one();
    }

private:
    void Run()
    {
        std::unique_lock guard(lock);
        while (!isEnding)
        {
            changed.wait(guard, [this] { return job != nullptr; });
            auto const taken = std::exchange(job, nullptr);
            guard.unlock();
            taken();
            guard.lock();
        }
    }

    std::mutex lock; // guards the job
    std::condition_variable changed;
    std::function<void()> job;
    bool isEnding = false; // used by `thread` only
    std::thread thread;
};

/// The moment at which the last thread received the job.
class Arrival final
{
public:
    void Note()
    {
        at = Stopwatch::Now();
        at.notify_one();
    }

    double Since(uint64 began)
    {
        at.wait(0);
        return static_cast<double>(at.exchange(0) - began);
    }

private:
    std::atomic<uint64> at{0};
};

} // namespace

int main(int argumentCount, char** arguments)
{
    uint64 const rounds = argumentCount > 1 ? std::strtoull(arguments[1], nullptr, 10) : 2000;
    Arrival arrival;
    InstantSystem system;
    InstantScanner scanner;
    ZuControl::ControlProtocolOperations operations(system, scanner);
    operations.AddOpEndEventHandler(PROTOCOL, [&arrival](int) { arrival.Note(); });
    Hop first;
    Hop second;

    Contest contest("Operation");
    contest.Enter("Module", [&] {
        uint64 const began = Stopwatch::Now();
        operations.StartScan(PROTOCOL);
        return arrival.Since(began);
    });
    contest.Enter("TwoHops", [&] {
        uint64 const began = Stopwatch::Now();
        first.Give([&] { second.Give([&] { arrival.Note(); }); });
        return arrival.Since(began);
    });
    contest.Enter("ThreadEach", [&] {
        uint64 const began = Stopwatch::Now();
        std::thread thread([&] { arrival.Note(); });
        double const taken = arrival.Since(began);
        thread.join();
        return taken;
    });
    contest.Run(rounds);
}
