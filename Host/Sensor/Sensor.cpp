#include "Host/Sensor/Sensor.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "wApi/wMutex.h"
#include "wApi/wTime.h"
#include "wBeacon/wMsgInfo.h"

#include <cmath>

namespace ZuHost
{

namespace
{

constexpr double USEC_A_SECOND = 1e6;
constexpr uint64 ROOM_POLL_USEC = 200; // consumers do not report the release of a set

double CheckedRate(double rateHz)
{
    if (!Sensor::IsRate(rateHz))
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The sensor cannot take %g profiles per second", rateHz);
    }
    return rateHz;
}

} // namespace

bool Sensor::IsRate(double rateHz)
{
    return rateHz == 0 || (rateHz >= MIN_RATE_HZ && rateHz <= MAX_RATE_HZ);
}

Sensor::Sensor(ZuCore::ResultHub& hub, std::unique_ptr<IProfileSource> profileSource, double newRateHz,
               ProfileTool const& newTool)
    : rateHz(CheckedRate(newRateHz)), source(std::move(profileSource)), publisher(hub), tool(newTool)
{
    ZU_CHECK(wThread_Construct(&thread));
    ZU_CHECK(wThread_SetName(thread, "Sensor"));
}

Sensor::~Sensor()
{
    ZU_GUARD_DESTRUCTOR([this] { Stop(); });
}

void Sensor::Start()
{
    Zu::MutexLock const control(controlLock);
    if (isThreadThere && !HasFailed())
    {
        return;
    }
    JoinThread();
    publishedCount.store(0, std::memory_order_relaxed);
    missedCount.store(0, std::memory_order_relaxed);
    encoder.store(0, std::memory_order_relaxed);
    frames.Clear();
    {
        Zu::MutexLock const guard(stateLock);
        isScanning = true;
        hasFailed = false;
        pendingTriggers = 0;
    }
    if (wStatus const status = wThread_Start(thread, &Sensor::RunThread, this); status != Zu::Status::SUCCESS)
    {
        Zu::MutexLock const guard(stateLock);
        isScanning = false;
        ZU_THROW(status);
    }
    isThreadThere = true;
}

void Sensor::Stop()
{
    if (scanThread.load(std::memory_order_relaxed) == std::this_thread::get_id())
    {
        ZU_THROW(Zu::Status::WRONG_STATE, "The sensor cannot be stopped by who handles its results");
    }
    Zu::MutexLock const control(controlLock);
    {
        Zu::MutexLock const guard(stateLock);
        isScanning = false;
        hasFailed = false;
    }
    stateChanged.NotifyAll();
    JoinThread();
}

void Sensor::Trigger()
{
    {
        Zu::MutexLock const guard(stateLock);
        if (!isScanning || hasFailed)
        {
            ZU_THROW(Zu::Status::WRONG_STATE, "The sensor takes a trigger only while it scans");
        }
        if (pendingTriggers >= MAX_PENDING_TRIGGERS)
        {
            ZU_THROW(Zu::Status::FULL, "The sensor has too many triggers to serve");
        }
        ++pendingTriggers;
    }
    stateChanged.NotifyAll();
}

bool Sensor::IsScanning() const
{
    Zu::MutexLock const guard(stateLock);
    return isScanning;
}

bool Sensor::HasFailed() const
{
    Zu::MutexLock const guard(stateLock);
    return hasFailed;
}

int64 Sensor::EncoderValue() const
{
    return encoder.load(std::memory_order_relaxed);
}

double Sensor::RateHz() const
{
    return rateHz;
}

void Sensor::SetLimits(ProfileTool::Limits const& limits)
{
    Zu::MutexLock const guard(stateLock);
    tool = ProfileTool(limits);
}

FrameHistory const& Sensor::Frames() const
{
    return frames;
}

LineRange Sensor::Line() const
{
    return source->Line();
}

DeskIo& Sensor::Io()
{
    return io;
}

uint64 Sensor::PublishedCount() const
{
    return publishedCount.load(std::memory_order_relaxed);
}

uint64 Sensor::MissedCount() const
{
    return missedCount.load(std::memory_order_relaxed);
}

int Sensor::RunThread(void* sensor)
{
    auto& self = *static_cast<Sensor*>(sensor);
    self.scanThread.store(std::this_thread::get_id(), std::memory_order_relaxed);
    if (!ZU_GUARD_BOUNDARY([&self] { self.Scan(); }))
    {
        Zu::MutexLock const guard(self.stateLock);
        self.hasFailed = self.isScanning; // a stop in the meantime is no failure
    }
    self.scanThread.store({}, std::memory_order_relaxed);
    return Zu::Status::SUCCESS;
}

void Sensor::Scan()
{
    startUsec = wTime_NowUsec();
    nextDue = 0;
    nextFrame = 0;
    while (rateHz == 0 ? WaitForRoom() : WaitUntilDue())
    {
        PublishFrame();
    }
}

bool Sensor::WaitForRoom()
{
    while (!publisher.HasRoom(MAX_SETS_ALIVE))
    {
        Zu::MutexLock const guard(stateLock);
        if (stateChanged.WaitUntil(stateLock, wTime_AfterUsec(ROOM_POLL_USEC),
                                   [this]() ZU_REQUIRES(stateLock) { return !isScanning; }))
        {
            return false;
        }
    }
    Zu::MutexLock const guard(stateLock);
    pendingTriggers = 0; // the next frame serves all triggers
    return isScanning;
}

bool Sensor::WaitUntilDue()
{
    uint64 const deadlineUsec = DeadlineUsec();
    {
        Zu::MutexLock const guard(stateLock);
        stateChanged.WaitUntil(stateLock, deadlineUsec,
                               [this]() ZU_REQUIRES(stateLock) { return !isScanning || pendingTriggers > 0; });
        if (!isScanning)
        {
            return false;
        }
        if (pendingTriggers > 0)
        {
            --pendingTriggers; // an extra frame: the next regular one stays due at its time
            return true;
        }
    }
    LeaveOutMissedFrames(wTime_NowUsec() - deadlineUsec);
    ++nextDue;
    return true;
}

void Sensor::LeaveOutMissedFrames(uint64 lagUsec)
{
    if (lagUsec <= MAX_LAG_USEC)
    {
        return;
    }
    auto const missed = static_cast<uint64>(static_cast<double>(lagUsec) * rateHz / USEC_A_SECOND);
    nextDue += missed;
    nextFrame += missed;
    missedCount.fetch_add(missed, std::memory_order_relaxed);
}

void Sensor::PublishFrame()
{
    uint64 const number = nextFrame++;
    int64 const ticks = static_cast<int64>(number) * ENCODER_TICKS_PER_FRAME;
    auto frame = std::make_shared<Frame>();
    frame->stamp.stampStatus = io.InputBits();
    frame->stamp.stampCounter = number;
    frame->stamp.stampTime = wTime_NowUsec();
    frame->stamp.stampEncoder = ticks;
    frame->stamp.stampValue = static_cast<int64>(number);
    frame->profile = source->ProfileAt(number);
    frame->results = Tool().Measure(*frame->profile);
    frame->sequence = ++sequence;
    publisher.Publish(frame->stamp, frame->results, rateHz == 0);
    frames.Add(std::move(frame));
    encoder.store(ticks, std::memory_order_relaxed);
    publishedCount.fetch_add(1, std::memory_order_relaxed);
}

ProfileTool Sensor::Tool() const
{
    Zu::MutexLock const guard(stateLock);
    return tool;
}

uint64 Sensor::DeadlineUsec() const
{
    // Computed from the scan start, not from the previous frame, so that errors do not add up.
    return startUsec + static_cast<uint64>(static_cast<double>(nextDue) * USEC_A_SECOND / rateHz);
}

void Sensor::JoinThread()
{
    if (isThreadThere)
    {
        ZU_CHECK(wThread_Join(thread, wTIMEOUT_INFINITE, nullptr));
        isThreadThere = false;
    }
}

} // namespace ZuHost
