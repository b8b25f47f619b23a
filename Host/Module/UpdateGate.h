#pragma once

#include "ZuControl/Control/ControlModuleEnviron.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <thread>

namespace ZuHost
{

/// Lets one thread at a time change the configuration.
///
/// Brackets of one thread nest; other threads wait. A bracket may be left open when a handler throws between
/// `BeginUpdate` and `EndUpdate`. Code that carries out a request therefore holds a `Request`, which closes the
/// brackets left open on its thread.
class UpdateGate final : public ZuControl::IUpdateGate
{
public:
    static constexpr uint64 DEFAULT_PATIENCE_USEC = 30'000'000;

    /// One request on one thread, from construction to destruction.
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

    /// `newPatienceUsec`: how long `BeginUpdate` waits for another thread.
    explicit UpdateGate(uint64 newPatienceUsec = DEFAULT_PATIENCE_USEC);
    ~UpdateGate();

    UpdateGate(UpdateGate const&) = delete;
    UpdateGate& operator=(UpdateGate const&) = delete;

    /// Throws `Zu::Status::BUSY` when another thread does not close its bracket in time.
    void BeginUpdate(bool exclusive) override;

    /// Does nothing on a thread without an open bracket.
    void EndUpdate() override;

    /// Whether any thread has an open bracket.
    bool IsOpen() const;

    /// Whether the calling thread has an open bracket.
    bool IsOpenHere() const;

private:
    void CloseOfThisThread();

    uint64 const patienceUsec;

    mutable Zu::Mutex lock; // a leaf
    Zu::CondVar closed;
    std::thread::id owner ZU_GUARDED_BY(lock); // no thread while depth is 0
    uint64 depth ZU_GUARDED_BY(lock) = 0;
};

} // namespace ZuHost
