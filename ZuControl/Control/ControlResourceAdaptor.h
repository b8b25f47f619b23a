#pragma once

#include "ZuApi/AsyncRunner.h"
#include "ZuControl/Control/IControlResourceAdaptor.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <memory>
#include <string>

namespace ZuRest
{
class RequestProcessor;
}

namespace ZuControl
{

/// Reads resources for protocols on a worker of its own while the caller waits.
///
/// The caller sets the flag `busy`. The flag is cleared when the task of the read ends: when the worker has run it,
/// when it cannot be queued, or when it is dropped. After the caller has stopped waiting, the read continues and writes
/// into a record that the caller and the worker share; until its end every other read is refused.
class ZUCONTROL_API ControlResourceAdaptor final : public IControlResourceAdaptor
{
public:
    /// `usedProcessor` outlives the object.
    explicit ControlResourceAdaptor(ZuRest::RequestProcessor& usedProcessor);

    /// Waits for a running read, without a bound.
    ~ControlResourceAdaptor() override;

    ControlResourceAdaptor(ControlResourceAdaptor const&) = delete;
    ControlResourceAdaptor& operator=(ControlResourceAdaptor const&) = delete;

    void Read(std::string const& path, std::string& output, uint64 timeout) override;

private:
    struct Reading;

    bool OperationBegin();
    int32 OperationFinish();
    void FinishRead() noexcept;
    std::shared_ptr<void> MakeTurn();
    void ReadResource(Reading& reading);
    std::string TextOf(std::string const& path);

    ZuRest::RequestProcessor& processor;
    std::atomic<int32> busy{0};              // 1 while a read runs; publishes nothing
    std::unique_ptr<Zu::AsyncRunner> runner; // last: its tasks use all of the above
};

} // namespace ZuControl
