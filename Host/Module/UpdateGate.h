#pragma once

#include "ZuControl/Control/IUpdateGate.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <thread>

namespace ZuHost
{

/// Lets one thread at a time change the configuration.
///
/// Brackets of one thread nest; another thread waits. A bracket may be left open, since what a request does may throw
/// between its two ends: whoever carries out a request on behalf of somebody holds a `Request`, which closes what was left
/// open on its thread.
class UpdateGate final : public ZuControl::IUpdateGate
{
public:
    static constexpr uint64 DEFAULT_PATIENCE_USEC = 30'000'000;

    /// One request, on one thread, for as long as this object lives.
    class Request final
    {
    public:
        explicit Request(UpdateGate& usedGate);
        ~Request();

        Request(Request const&) = delete;
        Request& operator=(Request const&) = delete;

    private:
        UpdateGate& gate;
    };

    /// `newPatienceUsec`: how long a thread waits for another one's changes.
    explicit UpdateGate(uint64 newPatienceUsec = DEFAULT_PATIENCE_USEC);
    ~UpdateGate();

    UpdateGate(UpdateGate const&) = delete;
    UpdateGate& operator=(UpdateGate const&) = delete;

    /// Throws -976 when another thread does not come to an end.
    void BeginUpdate(bool exclusive) override;

    /// Does nothing on a thread that has no bracket open.
    void EndUpdate() override;

    /// Whether any thread has a bracket open.
    bool IsOpen() const;

private:
    void CloseOfThisThread();

    uint64 const patienceUsec;

    mutable Zu::Mutex lock; // a leaf
    Zu::CondVar closed;
    std::thread::id owner ZU_GUARDED_BY(lock); // of no thread while depth is 0
    uint64 depth ZU_GUARDED_BY(lock) = 0;
};

} // namespace ZuHost
