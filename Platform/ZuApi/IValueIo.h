#pragma once

#include "wApi/wExport.h"

namespace Zu::Properties
{

class IValueReader;
class IValueWriter;

/// A value that can be moved through a typed reader or writer.
class ZUAPI_API IValueIo
{
public:
    virtual ~IValueIo();

    /// Stores the value that `reader` gives, without validation.
    virtual void ReadValue(IValueReader& reader) = 0;

    /// Writes the stored value.
    virtual void WriteValue(IValueWriter& writer) const = 0;

    /// Throws if the value that `reader` gives must be refused. Does not change the value. `ReadValue` may follow.
    virtual void ValidateValue(IValueReader& reader) = 0;
};

} // namespace Zu::Properties
