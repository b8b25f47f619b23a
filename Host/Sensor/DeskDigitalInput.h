#pragma once

#include "wApi/wTypes.h"

#include <array>

namespace ZuHost
{

/// A simulated digital input: which pin it reads, and which pins cause events. One thread at a time.
class DeskDigitalInput final
{
public:
    static constexpr uint64 PIN_COUNT = 2;

    /// `newFirstPin`: the pin that it reads initially and after `Clear`.
    explicit DeskDigitalInput(uint64 newFirstPin);

    /// Resets the pin and disables events. The input stays on or off.
    void Clear();

    void Enable(bool enable);
    bool IsEnabled() const;

    /// Sets the pin to read. Throws `Zu::Status::BAD_ARGUMENT` for an unknown pin.
    void SetPin(uint64 newPin);
    uint64 Pin() const;

    /// Sets whether changes of a pin are events; the simulated sensor ignores events. Throws `Zu::Status::BAD_ARGUMENT`
    /// for an unknown pin.
    void EnableEvents(uint64 pin, bool enable);
    bool HasEvents(uint64 pin) const;

private:
    uint64 firstPin;
    bool isEnabled = true;
    uint64 readPin;
    std::array<bool, PIN_COUNT> hasEvents{};
};

} // namespace ZuHost
