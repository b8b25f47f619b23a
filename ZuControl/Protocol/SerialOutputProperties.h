#pragma once

#include "ZuApi/Params/Array.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/Protocol/CommonControlProps.h"
#include "ZuControl/Protocol/StandardOutput.h"

#include <string>

namespace ZuControl::Protocol
{

/// How a serial output is to be driven, and how it writes.
struct ZUCONTROL_INTERNAL_API SerialOutputProperties final : public CommonControlProps
{
    /// How the values are written.
    struct ZUCONTROL_INTERNAL_API Format final : public Zu::Params::Group
    {
        Format();
        ~Format() override;

        Zu::Params::Value<std::string> delimiter;
        Zu::Params::Value<std::string> terminator;
        Zu::Params::Value<std::string> invalidValue;
        Zu::Params::Value<std::string> customDataFormat;
        Zu::Params::Value<bool> customFromatEnabled; ///< clients rely on the misspelt key
        Zu::Params::Value<int32> standardFormatMode;
    };

    SerialOutputProperties();
    ~SerialOutputProperties() override;

    Zu::Params::Value<bool> enabled;
    Zu::Params::Value<uint32> rate;
    Format format;
    Zu::Params::Array<StandardOutput> standardOutputs;
};

} // namespace ZuControl::Protocol
