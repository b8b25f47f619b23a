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

/// The destination of a value. A scalar takes one write. An array takes `BeginArray`, then `NextElement` and the write
/// for each element, then `EndArray`.
class ZUAPI_API IValueWriter
{
public:
    virtual ~IValueWriter();

    virtual void WriteInt32(int32 value) = 0;
    virtual void WriteUint32(uint32 value) = 0;
    virtual void WriteUint64(uint64 value) = 0;
    virtual void WriteUint16(uint16 value) = 0;
    virtual void WriteBool(bool value) = 0;
    virtual void WriteDouble(double value) = 0;
    virtual void WriteString(std::string const& value) = 0;

    virtual void BeginArray() = 0;
    virtual void NextElement() = 0;
    virtual void EndArray() = 0;
};

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
