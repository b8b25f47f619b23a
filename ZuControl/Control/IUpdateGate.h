#pragma once

#include "ZuControl/Export.h"

namespace ZuControl
{

/// Brackets every configuration update. The host implements it, and outlives the module with it.
///
/// The module calls it on the thread of the update, begin and end on the same thread; brackets of one thread may nest.
/// The module may leave a bracket open when a protocol or a handler of the update's event throws: the host closes it
/// when the request that opened it ends.
class ZUCONTROL_API IUpdateGate
{
public:
    /// Opens a bracket; the module always passes true. May block until another thread's bracket is closed. An exception
    /// refuses the update: nothing has changed, and no end follows.
    virtual void BeginUpdate(bool exclusive) = 0;

    /// Closes the bracket. Must neither block nor throw.
    virtual void EndUpdate() = 0;

protected:
    IUpdateGate() noexcept;
    ~IUpdateGate(); // not virtual: the first slot is the opening
};

} // namespace ZuControl
