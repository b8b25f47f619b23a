#pragma once

#include "wApi/wTypes.h"

namespace AsciiTcp
{

/// The value of an output at one moment.
struct Reading
{
    enum class State : uint8
    {
        NONE,    ///< no result yet
        INVALID, ///< the last result has no number
        VALID
    };

    State state = State::NONE;
    uint8 decision = 0; ///< 1 within limits
    double value = 0;   ///< finite if VALID
};

} // namespace AsciiTcp
