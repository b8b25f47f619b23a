#include "ZuControl/Plc/PlcWords.h"
#include "ZuControl/Plc/PlcWriters.h"

#include <nlohmann/json.hpp>

namespace ZuControl::Plc
{

namespace
{

using Json = nlohmann::json;

constexpr char const* SCHEMA = R"json({
  "$schema": "https://json-schema.org/draft/2020-12/schema",
  "title": "The values in the registers of a service",
  "type": "object",
  "required": ["service", "displayName", "fingerprint", "fingerprintVersion", "order", "bytesPerRegister", "port",
               "assemblies", "tags"],
  "additionalProperties": false,
  "properties": {
    "$schema": {"type": "string"},
    "service": {"type": "string"},
    "displayName": {"type": "string"},
    "fingerprint": {"type": "integer", "minimum": 0, "maximum": 4294967295},
    "fingerprintVersion": {"type": "integer", "minimum": 1},
    "order": {"$ref": "#/$defs/order"},
    "bytesPerRegister": {"enum": [1, 2]},
    "port": {"description": "null: not known", "type": ["integer", "null"], "minimum": 1, "maximum": 65535},
    "assemblies": {"type": "array", "items": {"type": "string"}},
    "tags": {"type": "array", "items": {"$ref": "#/$defs/tag"}}
  },
  "$defs": {
    "order": {"enum": ["ABCD", "CDAB", "BADC", "DCBA"]},
    "tag": {
      "type": "object",
      "required": ["name", "area", "offset", "number", "table", "count", "type", "order", "bit", "charactersPerRegister",
                   "divisor", "unit", "invalid", "writable", "role", "source", "scannerId", "block", "comment"],
      "additionalProperties": false,
      "properties": {
        "name": {"type": "string", "pattern": "^[A-Za-z][A-Za-z0-9]*(_[A-Za-z0-9]+)*$", "maxLength": 32},
        "area": {"enum": ["registers", "coils", "discreteInputs"]},
        "offset": {"description": "counted from 0", "type": "integer", "minimum": 0, "maximum": 65535},
        "number": {"description": "counted from 1", "type": "integer", "minimum": 1, "maximum": 65536},
        "table": {"description": "counted from 400001, 100001 or 000001", "type": "string", "pattern": "^[014][0-9]{5}$"},
        "count": {"description": "registers, coils or inputs", "type": "integer", "minimum": 1},
        "type": {"enum": ["BOOL", "BIT", "USINT", "INT", "UINT", "DINT", "UDINT", "LINT", "ULINT", "REAL", "LREAL", "TEXT",
                          "RAW"]},
        "order": {"$ref": "#/$defs/order"},
        "bit": {"description": "of a BIT; 0 is the least significant", "type": ["integer", "null"], "minimum": 0, "maximum": 15},
        "charactersPerRegister": {"description": "of a TEXT", "enum": [1, 2, null]},
        "divisor": {"description": "the value is the number in the registers divided by this", "type": "integer", "minimum": 1},
        "unit": {"type": "string"},
        "invalid": {"description": "the number in the registers that marks an invalid value, in decimal digits, or NaN",
                    "type": ["string", "null"], "pattern": "^(-?[0-9]+|NaN)$"},
        "writable": {"type": "boolean"},
        "role": {"enum": ["value", "commandRequestId", "commandId", "commandText", "answerRequestId", "answerStatus",
                          "fingerprint", "queueAcknowledge", "queueNumber", "queueSession", "queueLostBefore"]},
        "source": {"type": "string"},
        "scannerId": {"type": "string"},
        "block": {
          "type": "object",
          "required": ["assembly", "type", "address"],
          "additionalProperties": false,
          "properties": {
            "assembly": {"type": "string"},
            "type": {"type": "string"},
            "address": {"type": "integer", "minimum": 0, "maximum": 65535}
          }
        },
        "comment": {"type": "string"}
      }
    }
  }
}
)json";

Json TagDocument(PlcTag const& tag)
{
    ControlProtocol::RegisterField const& field = tag.field;
    bool const isBit = field.type == ControlProtocol::FieldType::BIT;
    bool const isText = field.type == ControlProtocol::FieldType::TEXT;
    return {{"name", tag.name},
            {"area", NameOf(field.area)},
            {"offset", tag.address},
            {"number", tag.address + 1},
            {"table", TableAddress(field.area, tag.address)},
            {"count", field.count},
            {"type", NameOf(field.type)},
            {"order", NameOf(tag.order)},
            {"bit", isBit ? Json(field.bit) : Json()},
            {"charactersPerRegister", isText ? Json(field.charactersPerRegister) : Json()},
            {"divisor", field.divisor},
            {"unit", field.unit},
            {"invalid", field.invalid.has_value() ? Json(InvalidText(field)) : Json()},
            {"writable", field.isWritable},
            {"role", NameOf(field.role)},
            {"source", tag.source},
            {"scannerId", tag.scannerId},
            {"block", {{"assembly", tag.assembly}, {"type", tag.blockType}, {"address", tag.blockAddress}}},
            {"comment", field.comment}};
}

} // namespace

std::string WriteJson(PlcTagList const& list)
{
    Json tags = Json::array();
    for (PlcTag const& tag : list.tags)
    {
        tags.push_back(TagDocument(tag));
    }
    Json const document{{"$schema", "plc?format=json-schema"},
                        {"service", list.service},
                        {"displayName", list.displayName},
                        {"fingerprint", list.fingerprint},
                        {"fingerprintVersion", list.fingerprintVersion},
                        {"order", NameOf(list.order)},
                        {"bytesPerRegister", list.bytesPerRegister},
                        {"port", list.port != 0 ? Json(list.port) : Json()},
                        {"assemblies", list.assemblies},
                        {"tags", std::move(tags)}};
    return document.dump(1, ' ', false, Json::error_handler_t::replace) + '\n';
}

std::string WriteJsonSchema(PlcTagList const& /*list*/)
{
    return SCHEMA;
}

} // namespace ZuControl::Plc
