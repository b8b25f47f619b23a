#pragma once

#include "ZuCore/ResultHub.h"
#include "wApi/wObject.h"
#include "wBeacon/wMsgInfo.h"

#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

namespace ZuTest
{

/// Listens to a hub. Keeps the content of each set and, on demand, the sets themselves.
class FrameCollector
{
public:
    struct Result
    {
        std::string dataSource;
        uint16 type;
        double value;   ///< 0 for a stamp
        uint8 decision; ///< likewise

        bool operator==(Result const&) const = default;
    };

    struct Frame
    {
        wStamp stamp;
        std::vector<Result> results; ///< the stamp's entry included
    };

    explicit FrameCollector(ZuCore::ResultHub& resultHub);
    ~FrameCollector();

    FrameCollector(FrameCollector const&) = delete;
    FrameCollector& operator=(FrameCollector const&) = delete;

    /// Waits up to ten seconds for `count` frames. Returns all frames so far; they are fewer after a timeout.
    std::vector<Frame> WaitForFrames(std::size_t count);

    std::size_t Count() const;

    /// With true, keeps a reference to each set from now on. With false, keeps none and releases the kept references.
    void Keep(bool keepsSets);

private:
    void OnSet(ZuCore::ResultSet set);

    ZuCore::ResultHub& hub;
    ZuCore::ResultHub::CallbackId id;

    mutable std::mutex lock; // guards the members below
    std::condition_variable changed;
    std::vector<Frame> frames;
    bool keeps = false;
    std::vector<wHandle<ZuCore::ResultSetObject>> kept;
};

} // namespace ZuTest
