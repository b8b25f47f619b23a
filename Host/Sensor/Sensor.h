#pragma once

#include "Host/Sensor/DeskIo.h"
#include "Host/Sensor/FrameHistory.h"
#include "Host/Sensor/FramePublisher.h"
#include "Host/Sensor/ProfileSource.h"
#include "wApi/wMutex.h"
#include "wApi/wThread.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <memory>
#include <thread>

namespace ZuHost
{

/// The simulated sensor: takes, measures, stamps and publishes profiles at its rate. Each stamp has the levels of the
/// digital inputs at the time of the profile.
///
/// Frames are due at fixed times after the scan start, so a late frame does not delay the following ones. If the sensor
/// is late by more than MAX_LAG_USEC, it skips the missed frames and their numbers, so the frame counter shows the gap.
/// At rate 0 it takes the next frame as soon as fewer than MAX_SETS_ALIVE of its sets are in use.
///
/// Threads: any thread may call. Profiles are taken and published on the thread "Sensor", which runs while the sensor
/// scans. Handlers of the hub that run there must not start or stop the sensor.
class Sensor final
{
public:
    static constexpr double MIN_RATE_HZ = 0.001; ///< 0 is allowed too
    static constexpr double MAX_RATE_HZ = 100'000;
    static constexpr uint64 MAX_LAG_USEC = 100'000;
    static constexpr std::size_t MAX_SETS_ALIVE = 64;
    static constexpr uint64 MAX_PENDING_TRIGGERS = 64;
    static constexpr int64 ENCODER_TICKS_PER_FRAME = 10; ///< movement of the conveyor from frame to frame

    /// Whether the sensor can scan at this rate.
    static bool IsRate(double rateHz);

    /// Throws `Zu::Status::BAD_ARGUMENT` for an invalid rate. The hub outlives the sensor.
    Sensor(ZuCore::ResultHub& hub, std::unique_ptr<IProfileSource> profileSource, double newRateHz,
           ProfileTool const& newTool = ProfileTool());
    ~Sensor(); ///< stops

    Sensor(Sensor const&) = delete;
    Sensor& operator=(Sensor const&) = delete;

    /// Starts scanning; frame and encoder begin at 0. Does nothing while scanning; starts again after a failure. Throws
    /// the status of a thread that cannot be made.
    void Start();

    /// Stops scanning; no frame is published afterwards. Does nothing while not scanning. Throws
    /// `Zu::Status::WRONG_STATE` on the sensor's own thread.
    void Stop();

    /// Takes one extra frame as soon as possible; at rate 0 this is the next frame. Throws `Zu::Status::WRONG_STATE`
    /// while not scanning and `Zu::Status::FULL` when too many triggers wait.
    void Trigger();

    /// True from a start to the next stop, even after a failure.
    bool IsScanning() const;

    /// True after a frame could not be taken or published, which ends the scan; until the next start or stop.
    bool HasFailed() const;

    /// Encoder ticks at the last frame.
    int64 EncoderValue() const;

    /// The set rate: profiles a second; 0: as fast as the consumers take them.
    double RateHz() const;

    /// Sets the limits of the measurements from the next frame on.
    void SetLimits(ProfileTool::Limits const& limits);

    /// The last frames since the scan start. Another start forgets them.
    FrameHistory const& Frames() const;

    /// The range of x that contains the points of all profiles.
    LineRange Line() const;

    /// The inputs and outputs, usable whether the sensor scans or not.
    DeskIo& Io();

    /// The number of published and of skipped frames since the scan start.
    uint64 PublishedCount() const;
    uint64 MissedCount() const;

private:
    static int RunThread(void* sensor);
    void Scan();
    bool WaitForRoom();
    bool WaitUntilDue();
    void LeaveOutMissedFrames(uint64 lagUsec);
    void PublishFrame();
    ProfileTool Tool() const;
    uint64 DeadlineUsec() const;
    void JoinThread() ZU_REQUIRES(controlLock);

    double const rateHz; // 0: as fast as the consumers take the profiles
    DeskIo io;
    FrameHistory frames;
    std::unique_ptr<IProfileSource> const source; // used on the thread "Sensor"
    FramePublisher publisher;                     // used on the thread "Sensor"

    // Taken first; held while a thread starts or ends.
    Zu::Mutex controlLock;
    bool isThreadThere ZU_GUARDED_BY(controlLock) = false;
    wThread thread ZU_GUARDED_BY(controlLock);

    // A leaf.
    mutable Zu::Mutex stateLock;
    Zu::CondVar stateChanged;
    bool isScanning ZU_GUARDED_BY(stateLock) = false;
    uint64 pendingTriggers ZU_GUARDED_BY(stateLock) = 0;
    ProfileTool tool ZU_GUARDED_BY(stateLock);
    bool hasFailed ZU_GUARDED_BY(stateLock) = false;

    // Written by the thread "Sensor", read by any thread for display. They publish no other data.
    std::atomic<uint64> publishedCount{0};
    std::atomic<uint64> missedCount{0};
    std::atomic<int64> encoder{0};
    std::atomic<std::thread::id> scanThread{}; // lets `Stop` detect a call on this thread

    // Used on the thread "Sensor" only.
    uint64 startUsec = 0;
    uint64 nextDue = 0; // index of the next due time
    uint64 nextFrame = 0;
    uint64 sequence = 0; // of the last frame, over all scans
};

} // namespace ZuHost
