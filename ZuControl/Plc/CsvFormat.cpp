#include "ZuControl/Plc/PlcWords.h"
#include "ZuControl/Plc/PlcWriters.h"

#include <algorithm>
#include <string_view>

namespace ZuControl::Plc
{

namespace
{

/// A text as one cell. A cell that a spreadsheet would take for a formula begins with an apostrophe.
std::string Cell(std::string_view text)
{
    std::string cell = "\"";
    std::size_t const first = text.find_first_not_of(" \t\r\n");
    if (first != std::string_view::npos && std::string_view("=+-@").find(text[first]) != std::string_view::npos)
    {
        cell += '\'';
    }
    for (char const c : text)
    {
        bool const isControl = static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
        cell += isControl ? ' ' : c;
        if (c == '"')
        {
            cell += c;
        }
    }
    return cell + '"';
}

void WriteRow(std::string& text, PlcTag const& tag, std::string const& fingerprint)
{
    ControlProtocol::RegisterField const& field = tag.field;
    bool const isBit = field.type == ControlProtocol::FieldType::BIT;
    text += tag.name + ',' + std::to_string(tag.address) + ',' + std::to_string(tag.address + 1) + ',' +
            TableAddress(field.area, tag.address) + ',' + std::to_string(field.count) + ',' +
            (isBit ? std::to_string(field.bit) : "") + ',' + NameOf(field.type) + ',' + NameOf(tag.order) + ',' +
            ScaleText(field.divisor) + ',' + Cell(field.unit) + ',' + InvalidText(field) + ',' +
            (field.isWritable ? "read/write" : "read") + ',' + Cell(tag.source) + ',' + Cell(tag.blockType) + ',' +
            Cell(field.comment) + ',' + fingerprint + ',' + NameOf(field.area) + "\r\n";
}

} // namespace

std::string WriteCsv(PlcTagList const& list)
{
    std::string text = "name,offset,number,table,registers,bit,type,order,scale,unit,invalid,access,source,block,"
                       "comment,fingerprint,area\r\n";
    std::string const fingerprint = std::to_string(list.fingerprint);
    for (PlcTag const& tag : list.tags)
    {
        WriteRow(text, tag, fingerprint);
    }
    return text;
}

} // namespace ZuControl::Plc
