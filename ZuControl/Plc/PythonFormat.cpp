#include "ZuControl/Plc/PlcWords.h"
#include "ZuControl/Plc/PlcWriters.h"
#include "ZuControl/Plc/ScriptText.h"

namespace ZuControl::Plc
{

using ControlProtocol::FieldType;

namespace
{

constexpr char const* PYTHON_HEAD = R"py(
    python3 FILE [HOST [PORT]]      prints all values

In a program: values = read(client), where client is a connected pymodbus.client.ModbusTcpClient.
"""

import struct
import sys
from dataclasses import dataclass, fields
from typing import List, Optional

from pymodbus.client import ModbusTcpClient

)py";

constexpr char const* PYTHON_CODE = R"py(

class MapChanged(Exception):
    """The registers of the service are no longer those for which this module was made."""


class Refused(Exception):
    """The service has refused a request."""


MOST_REGISTERS = 125  # of one request
NUMBERS = {"USINT": "xB", "INT": "h", "UINT": "H", "DINT": "i", "UDINT": "I", "LINT": "q", "ULINT": "Q", "REAL": "f", "LREAL": "d"}


def spans():
    """[area, first, count] of each request. A tag lies in one request, unless it is longer than a request can be."""
    found = []
    for tag in TAGS:
        area, first, count = tag[1:4]
        while count > 0:
            part = min(count, MOST_REGISTERS)
            last = found[-1] if found else None
            if last and last[0] == area and last[1] <= first and first + part - last[1] <= MOST_REGISTERS:
                last[2] = max(last[2], first + part - last[1])
            else:
                found.append([area, first, part])
            first += part
            count -= part
    return found


def ask(client, area, first, count):
    read = {"registers": client.read_holding_registers, "coils": client.read_coils, "discreteInputs": client.read_discrete_inputs}
    answer = read[area](first, count=count)
    if answer.isError():
        raise Refused(f"{area} {first} to {first + count - 1}: {answer}")
    return (answer.registers if area == "registers" else answer.bits)[:count]


def with_bytes(registers, order):
    """The registers with the bytes of each in this order."""
    return [register >> 8 | (register & 0xFF) << 8 for register in registers] if order in ("BADC", "DCBA") else registers


def decode(registers, kind, order, bit, characters, divisor, invalid):
    """The value in these registers; None for an invalid one."""
    if kind in ("BOOL", "RAW"):
        return bool(registers[0]) if kind == "BOOL" else list(registers)
    registers = with_bytes(registers, order)
    if kind == "TEXT":
        data = bytes(register & 0xFF for register in registers) if characters == 1 else struct.pack(f">{len(registers)}H", *registers)
        return data.split(b"\0")[0].decode("utf-8", "replace")
    if kind == "BIT":
        return None if registers[0] == invalid else bool(registers[0] >> bit & 1)
    if order in ("CDAB", "DCBA"):
        registers = registers[::-1]
    number, = struct.unpack(">" + NUMBERS[kind], struct.pack(f">{len(registers)}H", *registers))
    if number != number or number == invalid:
        return None
    return number if divisor == 1 else number / divisor


def read(client):
    """All values, read now. Raises MapChanged if the service shows another fingerprint."""
    seen = {}
    for area, first, count in spans():
        for offset, value in enumerate(ask(client, area, first, count)):
            seen[area, first + offset] = value
    values = {}
    for name, area, first, count, *how, role in TAGS:
        values[name] = decode([seen[area, first + offset] for offset in range(count)], *how)
        if role == "fingerprint" and values[name] != FINGERPRINT:
            raise MapChanged(f"the map has the fingerprint {values[name]}, and this module {FINGERPRINT}")
    return Values(**values)


def with_role(role):
    return next((tag for tag in TAGS if tag[-1] == role), None)


def command(client, request_id, number, text=""):
    """Writes a command, such as 1 to start the scan. Its answer is there when answer() shows the request id."""
    request, which, name = (with_role(role) for role in ("commandRequestId", "commandId", "commandText"))
    if not request or not which:
        raise Refused("the map has no registers for commands")
    first = min(request[2], which[2])
    registers = [0] * (max(request[2], which[2]) + 1 - first)
    registers[request[2] - first] = request_id
    registers[which[2] - first] = number
    if name and name[2] == first + len(registers):
        registers += [*text.encode()[:name[3] - 1], 0]
    answer = client.write_registers(first, with_bytes(registers, request[5]))
    if answer.isError():
        raise Refused(f"command {number}: {answer}")


def write(client, name, value):
    """Writes a coil, such as the one that starts the scan, or one register, such as the acknowledged number of a queue."""
    _, area, first, count, _, order = next((tag for tag in TAGS if tag[0] == name), [None] * 11)[:6]
    if area not in ("registers", "coils") or count != 1:
        raise Refused(f"there is no coil or single register {name}")
    answer = client.write_coil(first, value) if area == "coils" else client.write_register(first, with_bytes([value], order)[0])
    if answer.isError():
        raise Refused(f"{name}: {answer}")


def answer(client):
    """(request id, status) of the last command; 0: none, 1: in progress, 2: done, 3: failed."""
    return tuple(decode(ask(client, *tag[1:4]), *tag[4:-1]) for tag in map(with_role, ("answerRequestId", "answerStatus")))


def main():
    host = sys.argv[1] if len(sys.argv) > 1 else "127.0.0.1"
    port = int(sys.argv[2]) if len(sys.argv) > 2 else PORT
    client = ModbusTcpClient(host, port=port)
    if not client.connect():
        sys.exit(f"no connection to {host}, port {port}")
    try:
        values = read(client)
    finally:
        client.close()
    for field in fields(values):
        print(field.name, getattr(values, field.name))


if __name__ == "__main__":
    main()
)py";

char const* PythonType(ControlProtocol::RegisterField const& field)
{
    switch (field.type)
    {
    case FieldType::BOOL:
        return "bool";
    case FieldType::BIT:
        return "Optional[bool]";
    case FieldType::TEXT:
        return "str";
    case FieldType::RAW:
        return "List[int]";
    case FieldType::REAL:
    case FieldType::LREAL:
        return "Optional[float]";
    default:
        break;
    }
    bool const isWhole = field.divisor == 1;
    return field.invalid.has_value() ? (isWhole ? "Optional[int]" : "Optional[float]") : (isWhole ? "int" : "float");
}

void WriteTuple(std::string& text, PlcTag const& tag)
{
    ControlProtocol::RegisterField const& field = tag.field;
    std::string const invalid = InvalidText(field);
    text += "    (\"" + tag.name + "\", \"" + NameOf(field.area) + "\", " + std::to_string(tag.address) + ", " +
            std::to_string(field.count) + ", \"" + NameOf(field.type) + "\", \"" + NameOf(tag.order) + "\", " +
            std::to_string(field.bit) + ", " + std::to_string(field.charactersPerRegister) + ", " +
            std::to_string(field.divisor) + ", " + (invalid.empty() || invalid == "NaN" ? "None" : invalid) + ", \"" +
            NameOf(field.role) + "\"),\n";
}

void WriteMember(std::string& text, PlcTag const& tag)
{
    ControlProtocol::RegisterField const& field = tag.field;
    text += "    " + tag.name + ": " + PythonType(field);
    std::string remark = CommentText(field.unit);
    remark += !remark.empty() && !field.comment.empty() ? "; " : "";
    remark += CommentText(field.comment);
    text += (remark.empty() ? "" : "  # " + remark) + '\n';
}

} // namespace

std::string WritePython(PlcTagList const& list)
{
    std::string text =
        "\"\"\"The values in the registers of a service, read with pymodbus.\n" + std::string(PYTHON_HEAD);
    text +=
        "SERVICE = " + PythonLiteral(list.service) + "\nFINGERPRINT = " + std::to_string(list.fingerprint) +
        "\nPORT = " + std::to_string(list.port != 0 ? list.port : 502) +
        "\n\n# name, area, first, count, type, order, bit, characters a register, divisor, invalid, role\nTAGS = [\n";
    for (PlcTag const& tag : list.tags)
    {
        WriteTuple(text, tag);
    }
    text += "]\n\n# The data source of each tag that has one.\nSOURCES = {\n";
    for (PlcTag const& tag : list.tags)
    {
        text += tag.source.empty() ? "" : "    \"" + tag.name + "\": " + PythonLiteral(tag.source) + ",\n";
    }
    text += "}\n\n\n@dataclass\nclass Values:\n    \"\"\"None stands for an invalid value.\"\"\"\n\n";
    for (PlcTag const& tag : list.tags)
    {
        WriteMember(text, tag);
    }
    return text + PYTHON_CODE;
}

} // namespace ZuControl::Plc
