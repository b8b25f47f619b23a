#pragma once

#include "Host/Sensor/DeskIo.h"
#include "Host/Sensor/FramePublisher.h"
#include "Host/Sensor/IProfileSource.h"
#include "wApi/wMutex.h"
#include "wApi/wThread.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <memory>
#include <thread>

namespace ZuHost
{

/// The sensor: takes profiles at its rate, measures them, stamps them, publishes them. Each stamp has the levels of the digital
/// inputs as they are when the profile is taken.
///
/// Frames are due at fixed moments after the scan start, so that a late one delays no later one. A sensor that has fallen
/// behind by more than MAX_LAG_USEC leaves out the frames that it missed; their numbers go with them, so that a gap shows in
/// the frame counter. At rate 0 it takes the next frame as soon as less than MAX_SETS_ALIVE of its sets are in use.
/// Threads: any thread may call, several at once. Profiles are taken and published on "Sensor", which runs while the sensor
/// scans; handlers of the hub that run there must neither start nor stop it.
class Sensor final
{
public:
    static constexpr double MIN_RATE_HZ = 0.001; ///< but for 0
    static constexpr double MAX_RATE_HZ = 100'000;
    static constexpr uint64 MAX_LAG_USEC = 100'000;
    static constexpr std::size_t MAX_SETS_ALIVE = 64;
    static constexpr uint64 MAX_PENDING_TRIGGERS = 64;
    static constexpr int64 ENCODER_TICKS_PER_FRAME = 10; ///< the conveyor moves on by this much from frame to frame

    /// Whether the sensor can scan at this rate.
    static bool IsRate(double rateHz);

    /// Throws -997 for a rate that is none. The hub outlives the sensor.
    Sensor(ZuCore::ResultHub& hub, std::unique_ptr<IProfileSource> profileSource, double newRateHz,
           ProfileTool const& newTool = ProfileTool());
    ~Sensor(); ///< stops

    Sensor(Sensor const&) = delete;
    Sensor& operator=(Sensor const&) = delete;

    /// Starts scanning, with frame 0 and the encoder at 0; does nothing while it scans, and begins anew after a failure.
    /// Throws the status of a thread that cannot be made.
    void Start();

    /// No frame is published after this; does nothing when it does not scan. Throws -1000 on the sensor's own thread.
    void Stop();

    /// One extra frame, as soon as may be; at rate 0 it is the next one. Throws -1000 when it does not scan and -977 when too many triggers wait.
    void Trigger();

    /// True from a start to the next stop, also after a failure.
    bool IsScanning() const;

    /// A frame could not be taken or published and the scan ended; until the next start or stop.
    bool HasFailed() const;

    /// Ticks at the last frame.
    int64 EncoderValue() const;

    /// What is wired to the sensor, whether it scans or not.
    DeskIo& Io();

    /// Frames since the scan start: those that were published, and those that were missed.
    uint64 PublishedCount() const;
    uint64 MissedCount() const;

private:
    static int RunThread(void* sensor);
    void Scan();
    bool WaitForRoom();
    bool WaitUntilDue();
    void LeaveOutMissedFrames(uint64 lagUsec);
    void PublishFrame();
    uint64 DeadlineUsec() const;
    void JoinThread() ZU_REQUIRES(controlLock);

    double const rateHz; // 0: as fast as the consumers take the profiles
    ProfileTool const tool;
    DeskIo io;
    std::unique_ptr<IProfileSource> const source; // used on the sensor's thread
    FramePublisher publisher;                     // likewise

    // Taken first; held while a thread starts or ends.
    Zu::Mutex controlLock;
    bool isThreadThere ZU_GUARDED_BY(controlLock) = false;
    wThread thread ZU_GUARDED_BY(controlLock);

    // A leaf.
    mutable Zu::Mutex stateLock;
    Zu::CondVar stateChanged;
    bool isScanning ZU_GUARDED_BY(stateLock) = false;
    uint64 pendingTriggers ZU_GUARDED_BY(stateLock) = 0;
    bool hasFailed ZU_GUARDED_BY(stateLock) = false;

    // The sensor's thread writes them, any thread reads them for show: nothing is published by them.
    std::atomic<uint64> publishedCount{0};
    std::atomic<uint64> missedCount{0};
    std::atomic<int64> encoder{0};
    std::atomic<std::thread::id> scanThread{}; // so that this thread knows itself

    // The sensor's thread alone.
    uint64 startUsec = 0;
    uint64 nextDue = 0; // which of the moments at which a frame is due comes next
    uint64 nextFrame = 0;
};

} // namespace ZuHost
