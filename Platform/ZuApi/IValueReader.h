#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <string>

namespace Zu::Properties
{

/// The source of a value. Each read returns the present value in the requested form and throws if it has no such form.
/// Between `BeginArray` and `EndArray` the present value is the element that the last `NextElement` moved to.
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

    /// Enters the present value, which must be an array. No element is present until `NextElement`.
    virtual void BeginArray() = 0;
    /// Moves to the next element. Returns false if there is none.
    virtual bool NextElement() = 0;
    /// Leaves the array.
    virtual void EndArray() = 0;
};

} // namespace Zu::Properties
