#pragma once

#include "ZuApi/Event.h"
#include "ZuControl/Export.h"
#include "ZuScan/Sensor.h"
#include "wApi/wTypes.h"

#include <string>

namespace ZuScan
{
class ISensor;
}

namespace ZuControl
{

/// The operations on a scanner that the module carries out for protocols. A scanner is named by its id; the empty id
/// means the first scanner of the first engine that has any.
///
/// Protocols do not call this: they use ControlProtocolOperations, IControlDataCache and IControlHardwareManager. The
/// workers of these call it, several at once; the host's main thread calls `FindSupportedSensor`. Operations block
/// until the scanner has answered, and throw the exceptions of the scanner and `Zu::Status::NOT_FOUND` without a
/// scanner.
class ZUCONTROL_API IControlScanEngineInterface
{
public:
    /// The scanner's own three values, taken over one for one.
    enum ControlAlignmentState : uint8
    {
        ALIGNMENT_STATE_0 = 0,
        ALIGNMENT_STATE_1 = 1,
        ALIGNMENT_STATE_2 = 2
    };

    /// The state of one scanner.
    struct ScannerStateInfo
    {
        std::string id;                ///< of the scanner that answered
        int64 currentEncoderValue = 0; ///< the lowest number: no reading
        uint64 currentSyncTime = 0;    ///< the scanner's number times 1000, divided by 1024; all ones: no reading
        ControlAlignmentState alignmentState = ALIGNMENT_STATE_0;
        bool laserEnabled = true;
    };

    IControlScanEngineInterface() noexcept;
    virtual ~IControlScanEngineInterface(); // first of the slots that others call through: never move one

    virtual void SoftwareTrigger(std::string const& scannerId) = 0;

    /// Begins an alignment; its end comes through `AlignmentCompletedEvent`.
    virtual void Alignment(std::string const& scannerId) = 0;
    virtual void ClearAlignment(std::string const& scannerId) = 0;

    /// The event belongs to the scanner, which fires it on a thread of its own.
    virtual Zu::Event<ZuScan::AlignCompletionStatus>& AlignmentCompletedEvent(std::string const& scannerId) = 0;

    /// Fills `info`. A scanner that offers no information leaves `info` unchanged.
    virtual void ScannerInfo(std::string const& scannerId, ScannerStateInfo& info) = 0;

    /// The first sensor of the first scanner that has one, or null. The engine owns it.
    virtual ZuScan::ISensor* FindSupportedSensor() = 0;
};

} // namespace ZuControl
