#include "ZuControl/Plc/PlcWords.h"
#include "ZuControl/Plc/PlcWriters.h"
#include "ZuControl/Plc/ScriptText.h"

#include <algorithm>

namespace ZuControl::Plc
{

using ControlProtocol::BlockOrder;
using ControlProtocol::FieldArea;
using ControlProtocol::FieldType;

namespace
{

constexpr uint32 MOST_IN_REQUEST = 125; // of one request

/// The options of mbpoll that show a tag: its number where mbpoll can decode it, otherwise its registers.
std::string TypeOptions(PlcTag const& tag)
{
    if (tag.field.area != FieldArea::REGISTERS)
    {
        return tag.field.area == FieldArea::COILS ? "-t 0" : "-t 1";
    }
    bool const isLowByteFirst = tag.order.areBytesSwapped;
    if (isLowByteFirst)
    {
        return "-t 4:hex";
    }
    std::string const highFirst = tag.order == BlockOrder::ABCD ? " -B" : "";
    switch (tag.field.type)
    {
    case FieldType::DINT:
    case FieldType::UDINT:
        return "-t 4:int" + highFirst;
    case FieldType::REAL:
        return "-t 4:float" + highFirst;
    case FieldType::INT:
    case FieldType::UINT:
        return "-t 4";
    default:
        return "-t 4:hex";
    }
}

/// Whether mbpoll shows the registers of a tag as one number.
bool IsOneNumber(std::string const& options)
{
    return options.starts_with("-t 4:int") || options.starts_with("-t 4:float");
}

void WriteMbpoll(std::string& text, PlcTag const& tag)
{
    ControlProtocol::RegisterField const& field = tag.field;
    text += "\n# " + tag.name + ": " + NameOf(field.type) + ' ' + NameOf(tag.order);
    text += field.divisor != 1 ? ", times " + ScaleText(field.divisor) : "";
    text += !field.unit.empty() ? ' ' + CommentText(field.unit) : "";
    text += field.type == FieldType::BIT ? ", bit " + std::to_string(field.bit) : "";
    text += field.invalid.has_value() ? ", invalid: " + InvalidText(field) : "";
    text += !tag.source.empty() ? ", from " + CommentText(tag.source) : "";
    text += !field.comment.empty() ? "; " + CommentText(field.comment) : "";
    std::string const options = TypeOptions(tag);
    uint32 const values = IsOneNumber(options) ? 1 : field.count;
    for (uint32 first = 0; first < values; first += MOST_IN_REQUEST)
    {
        text += "\nmbpoll -m tcp -0 -1 -r " + std::to_string(tag.address + first) + " -c " +
                std::to_string(std::min(values - first, MOST_IN_REQUEST)) + ' ' + options + " -p \"$port\" \"$host\"";
    }
    text += '\n';
}

} // namespace

std::string WriteShell(PlcTagList const& list)
{
    std::string text =
        "#!/bin/sh\n# Reads each value of the service " + CommentText(list.service) +
        " with mbpoll. Usage: sh FILE [HOST [PORT]]\n# Fingerprint of the map: " + std::to_string(list.fingerprint) +
        "\nhost=${1:-127.0.0.1}\nport=${2:-" + std::to_string(list.port != 0 ? list.port : 502) + "}\n";
    for (PlcTag const& tag : list.tags)
    {
        WriteMbpoll(text, tag);
    }
    return text;
}

} // namespace ZuControl::Plc
