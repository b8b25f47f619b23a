#pragma once

#include "ZuControl/Export.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"
#include "wBeacon/wMsgInfo.h"

#include <optional>
#include <vector>

namespace ZuCore
{
struct ResultSetObject;
}

namespace ZuControl
{

/// The results that a protocol got last.
///
/// The numbers are copied, so that no message is kept alive. The dispatcher's thread writes them, any thread reads them.
class ZUCONTROL_INTERNAL_API LastDelivery final
{
public:
    struct Measurement
    {
        uint64 dataSource = 0; ///< numeric id, see `ZuCore::ResultInfo_NumericId`
        double value = 0;      ///< `ZuVision::MISSING_MEASUREMENT` for a measurement that failed
        uint8 decision = 0;
    };

    struct Content
    {
        uint64 usec = 0;             ///< when the protocol had taken the results; 0: it has not had any
        std::optional<wStamp> stamp; ///< if the protocol wants it
        std::vector<Measurement> measurements;
    };

    LastDelivery();
    ~LastDelivery();

    LastDelivery(LastDelivery const&) = delete;
    LastDelivery& operator=(LastDelivery const&) = delete;

    /// The protocol has taken `set` at `nowUsec`. Other messages than stamps and measurements are left out. When memory
    /// runs out, so are further measurements.
    void Take(ZuCore::ResultSetObject const& set, uint64 nowUsec) noexcept;

    Content Read() const;

private:
    mutable Zu::Mutex lock; // a leaf
    Content content ZU_GUARDED_BY(lock);
};

} // namespace ZuControl
