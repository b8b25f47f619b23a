#pragma once

#include "ZuControl/Export.h"

namespace ZuControl
{

/// Brackets every configuration update. The host implements it.
///
/// A bracket may be left open for good when a handler of the update's event throws: the host closes it when the request
/// that opened it ends.
class ZUCONTROL_API IUpdateGate
{
public:
    /// Opens a bracket; the module always passes true.
    virtual void BeginUpdate(bool exclusive) = 0;
    virtual void EndUpdate() = 0;

protected:
    IUpdateGate() noexcept;
    ~IUpdateGate(); // not virtual: the first slot is the opening
};

} // namespace ZuControl
