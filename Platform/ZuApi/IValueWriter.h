#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <string>

namespace Zu::Properties
{

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

} // namespace Zu::Properties
