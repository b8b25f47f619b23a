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

    /// Takes over what `reader` has, without validation.
    virtual void ReadValue(IValueReader& reader) = 0;

    /// Hands over the stored value.
    virtual void WriteValue(IValueWriter& writer) const = 0;

    /// Throws when a change to what `reader` has is refused; stores nothing. A read may follow.
    virtual void ValidateValue(IValueReader& reader) = 0;
};

} // namespace Zu::Properties
