#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <string>

namespace Zu::Properties
{

/// Where a value comes from. Each read gives the present value in the form that is asked for and throws when it has no such
/// form. Between `BeginArray` and `EndArray` the present value is the element that the last `NextElement` moved to.
class ZUAPI_API IValueReader
{
public:
    virtual ~IValueReader();

    virtual int32 ReadInt32() = 0;
    virtual uint32 ReadUint32() = 0;
    virtual uint64 ReadUint64() = 0;
    virtual uint16 ReadUint16() = 0;
    virtual bool ReadBool() = 0;
    virtual double ReadDouble() = 0;
    virtual std::string ReadString() = 0;

    /// Steps into the present value, which must be an array; no element is present yet.
    virtual void BeginArray() = 0;
    /// Moves to the next element; false when there is none.
    virtual bool NextElement() = 0;
    /// Steps out again.
    virtual void EndArray() = 0;
};

} // namespace Zu::Properties
