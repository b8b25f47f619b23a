"""A PLC for tests: a program around the generated function blocks, and what a PLC programmer's own blocks for Modbus do."""

import math
import struct

from . import Machine, compile_text

FORMATS = {"USINT": "B", "INT": "h", "UINT": "H", "DINT": "i", "UDINT": "I", "LINT": "q", "ULINT": "Q", "REAL": "f", "LREAL": "d"}
MOST_REGISTERS = 125  # of a read

PROGRAM = """
PROGRAM Main
VAR
  registers : {0}_Registers;
  map : {0}_Map;
  decode : {0}_Decode;
END_VAR
decode(registers := registers, map := map);
END_PROGRAM
"""

PROGRAM_WITH_COMMANDS = """
PROGRAM Main
VAR
  registers : {0}_Registers;
  words : {0}_Words;
  map : {0}_Map;
  decode : {0}_Decode;
  run : {0}_Command;
  execute, isWritten, isRefused : BOOL;
  command : UINT;
  text : STRING[{1}];
  firstId : UINT := 1000;
  lastId : UINT := 1999;
END_VAR
decode(registers := registers, map := map);
run(execute := execute, fits := decode.fits, command := command, text := text, firstId := firstId, lastId := lastId,
    isWritten := isWritten, isRefused := isRefused, map := map, words := words);
END_PROGRAM
"""


class Plc:
    """The program `Main` with the variables `registers` and `map`, and those for commands where there are some."""

    def __init__(self, source, prefix, program=None):
        if program is None:
            program = PROGRAM_WITH_COMMANDS if f"{prefix}_Command" in source else PROGRAM
        length = int(source.partition("  text : STRING[")[2].partition("]")[0] or 1)
        self.machine = Machine(compile_text(source + program.format(prefix, length)))
        self.program = self.machine.program("Main")
        self.get = self.program.get
        self.set = self.program.set
        (self.first, self.last), = self.range_of(f"{prefix}_Registers")
        self.words = self.range_of(f"{prefix}_Words")[0] if f"{prefix}_Words" in source else None

    def range_of(self, name):
        return self.machine.library.types[name.upper()].ranges

    def cycle(self, seconds=0.01):
        self.machine.cycle(self.program, seconds)

    def show(self, registers, seconds=0.01):
        """A cycle with these registers by address; the others are 0."""
        self.set("registers", [registers.get(address, 0) for address in range(self.first, self.last + 1)])
        self.cycle(seconds)

    def read(self, modbus):
        """The registers of the real host."""
        found = []
        for first in range(self.first, self.last + 1, MOST_REGISTERS):
            found += modbus.read(first, min(MOST_REGISTERS, self.last + 1 - first))
        return dict(enumerate(found, self.first))

    def value(self, tag):
        """The value of a tag in the map; None when it is not valid."""
        name = f"map.{tag['name']}"
        if not is_struct(tag):
            return self.get(name)
        value = self.get(name + ".value")
        if not self.get(name + ".valid"):
            if value != 0:
                raise AssertionError(f"{name} is not valid, and shows {value}")
            return None
        return self.get(name + ".number") if is_scaled(tag) else value


def is_scaled(tag):
    return tag["divisor"] > 1 and tag["type"] not in ("REAL", "LREAL")


def is_struct(tag):
    return tag["invalid"] is not None or is_scaled(tag) or tag["type"] in ("REAL", "LREAL")


def swapped(register):
    return register >> 8 | (register & 0xFF) << 8


def in_order(registers, order):
    """Between the most significant register first, with its high byte first, and the registers of a tag."""
    if order in ("CDAB", "DCBA"):
        registers = registers[::-1]
    return [swapped(register) for register in registers] if order in ("BADC", "DCBA") else list(registers)


def encode(tag, value):
    """The registers of a tag that show this value, which is a bytes object for a TEXT and a list for a RAW."""
    kind, order, count = tag["type"], tag["order"], tag["count"]
    if kind == "RAW":
        return value
    if kind == "TEXT":
        padded = value.ljust(count * tag["charactersPerRegister"], b"\0")
        registers = list(padded) if tag["charactersPerRegister"] == 1 else list(struct.unpack(f">{count}H", padded))
        return in_order(registers, {"CDAB": "ABCD", "DCBA": "BADC"}.get(order, order))
    data = struct.pack(">H", value << tag["bit"]) if kind == "BIT" else struct.pack(">" + FORMATS[kind], value)
    return in_order(list(struct.unpack(f">{count}H", data.rjust(2 * count, b"\0"))), order)


def decode(tag, registers):
    """What `encode` made these registers of; None for an invalid value."""
    kind, order, count = tag["type"], tag["order"], tag["count"]
    registers = [registers[tag["offset"] + place] for place in range(count)]
    if kind == "RAW":
        return registers
    if kind == "TEXT":
        data = struct.pack(f">{count}H", *in_order(registers, {"CDAB": "ABCD", "DCBA": "BADC"}.get(order, order)))
        return (data[1::2] if tag["charactersPerRegister"] == 1 else data).split(b"\0")[0]
    data = struct.pack(f">{count}H", *in_order(registers, order))
    if kind == "BIT":
        return bool(data[1 - tag["bit"] // 8] >> tag["bit"] % 8 & 1)
    value, = struct.unpack(">" + FORMATS[kind], data[-struct.calcsize(FORMATS[kind]):])
    if kind in ("REAL", "LREAL"):
        return value if math.isfinite(value) else None
    return None if tag["invalid"] is not None and value == int(tag["invalid"]) else value


def as_shown(value):
    """A decoded value as the map holds it: a text has a character for each byte."""
    return value.decode("latin-1") if isinstance(value, bytes) else value
