#pragma once

#include "Support/CallLog.h"
#include "ZuApi/Exception.h"
#include "ZuControl/Control/IControlScanEngineInterface.h"
#include "wApi/wMutex.h"

#include <functional>
#include <map>

namespace ZuTest
{

/// One scanner, which answers to every id. Records its calls. A call "X" then runs `on["X"]` if the test has set it.
/// Tests set `on` before other threads call.
class FakeScanEngineInterface final : public ZuControl::IControlScanEngineInterface
{
public:
    explicit FakeScanEngineInterface(CallLog& sharedCalls) : calls(sharedCalls)
    {
    }

    void SoftwareTrigger(std::string const& scannerId) override
    {
        Note("SoftwareTrigger(" + scannerId + ")");
    }

    void Alignment(std::string const& scannerId) override
    {
        Note("Alignment(" + scannerId + ")");
    }

    void ClearAlignment(std::string const& scannerId) override
    {
        Note("ClearAlignment(" + scannerId + ")");
    }

    Zu::Event<ZuScan::AlignCompletionStatus>& AlignmentCompletedEvent(std::string const& scannerId) override
    {
        Note("AlignmentCompletedEvent(" + scannerId + ")");
        return event;
    }

    void ScannerInfo(std::string const& scannerId, ScannerStateInfo& filled) override
    {
        Note("ScannerInfo(" + scannerId + ")");
        Zu::MutexLock const guard(lock);
        filled = info;
    }

    ZuScan::ISensor* FindSupportedSensor() override
    {
        Note("FindSupportedSensor()");
        return sensor;
    }

    void SetInfo(ScannerStateInfo newInfo)
    {
        Zu::MutexLock const guard(lock);
        info = std::move(newInfo);
    }

    std::map<std::string, std::function<void()>> on;
    Zu::Event<ZuScan::AlignCompletionStatus> event;
    ZuScan::ISensor* sensor = nullptr;

private:
    void Note(std::string const& call)
    {
        calls.Add(call);
        if (auto const position = on.find(call); position != on.end())
        {
            position->second();
        }
    }

    CallLog& calls;
    Zu::Mutex lock; // guards the member below, which a fetch reads on another thread
    ScannerStateInfo info;
};

} // namespace ZuTest
