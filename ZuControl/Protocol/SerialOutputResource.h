#pragma once

#include "ZuControl/Protocol/OutputResourceBase.h"
#include "ZuControl/Protocol/SerialOutputProperties.h"

namespace ZuControl::Protocol
{

/// `/controls/hardware/:device/serial/:port`: how a serial output is to be driven. A change of "format" or
/// "standardOutputs" alone is not notified.
class ZUCONTROL_INTERNAL_API SerialOutputResource final : public OutputResourceBase
{
public:
    explicit SerialOutputResource(IControlManager& usedManager);
    ~SerialOutputResource() override;

protected:
    CommonControlProps& Record() override ZU_REQUIRES(recordLock);
    bool TakeChange() override ZU_REQUIRES(recordLock);

private:
    /// The members of the record that cause a notification when they change.
    struct Fields
    {
        bool enabled = false;
        uint32 rate = 0;

        bool operator==(Fields const&) const = default;
    };

    SerialOutputProperties record ZU_GUARDED_BY(recordLock);
    Fields told ZU_GUARDED_BY(recordLock); // as of the last notification
};

} // namespace ZuControl::Protocol
