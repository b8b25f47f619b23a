#pragma once

#include "wApi/wTypes.h"

#include <array>

namespace ZuHost
{

/// A digital input of the sensor on the desk: which pin it reads, and which pins give events. One thread at a time.
class DeskDigitalInput final
{
public:
    static constexpr uint64 PIN_COUNT = 2;

    /// `newFirstPin`: the pin that it reads at first and once cleared.
    explicit DeskDigitalInput(uint64 newFirstPin);

    /// Back to its first pin, without events. It stays on or off.
    void Clear();

    void Enable(bool enable);
    bool IsEnabled() const;

    /// From now on it reads this pin; -997 for one that there is not.
    void SetPin(uint64 newPin);
    uint64 Pin() const;

    /// Whether changes at a pin are events, which nothing on the desk waits for; -997 for a pin that there is not.
    void EnableEvents(uint64 pin, bool enable);
    bool HasEvents(uint64 pin) const;

private:
    uint64 firstPin;
    bool isEnabled = true;
    uint64 readPin;
    std::array<bool, PIN_COUNT> hasEvents{};
};

} // namespace ZuHost
