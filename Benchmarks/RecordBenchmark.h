#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"

#include <nlohmann/json.hpp>

namespace ZuBench
{

/// Four numbers and a text: a record of a kind that occurs in large numbers.
struct Record : Zu::Params::Group
{
    Record()
    {
        Register("id", "Id", id);
        Register("size", "Size", size);
        Register("source", "Source", source);
        Register("offset", "Offset", offset);
        Register("length", "Length", length);
    }

    Zu::Params::Value<uint16> id;
    Zu::Params::Value<uint16> size;
    Zu::Params::Value<std::string> source;
    Zu::Params::Value<uint16> offset;
    Zu::Params::Value<uint16> length;
};

/// The same record with bounds for `size`.
struct BoundedRecord : Record
{
    BoundedRecord()
    {
        size.EnableMaximum(true).GetMaximum() = 60000;
    }
};

/// The same record as a JSON object.
inline nlohmann::json MakeObject()
{
    return {{"id", 0}, {"size", 0}, {"source", ""}, {"offset", 0}, {"length", 0}};
}

} // namespace ZuBench
