#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace AsciiTcp
{

/// The argument of the command sendText.
struct SendTextParams final : public Zu::Params::Group
{
public:
    static constexpr std::size_t MOST_BYTES = 256;

    SendTextParams();
    ~SendTextParams() override;

    /// Whether `text` may be sent to clients: 1 to MOST_BYTES bytes without control characters.
    static bool IsValid(std::string_view text);

    Zu::Params::Value<std::string> text;
};

} // namespace AsciiTcp
