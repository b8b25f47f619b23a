"""Values while a program runs: bool, int, float, str, `ArrayValue`, dict for a struct, `Instance`."""

import math
import struct

from . import types


class Fault(Exception):
    """A program did at run time what the standard leaves to each tool, or forbids."""


class ArrayValue:
    def __init__(self, of, items):
        self.type = of
        self.items = items

    def place(self, indices):
        place = 0
        for index, (first, last) in zip(indices, self.type.ranges):
            if not first <= index <= last:
                raise Fault(f"the index {index} is not in {first} to {last}")
            place = place * (last - first + 1) + index - first
        return place


class Instance:
    """A function block or a program with its variables, by their names in capitals."""

    def __init__(self, block):
        self.block = block
        self.values = {name: initial(variable) for name, variable in block.variables.items() if variable.section != "VAR_IN_OUT"}


def initial(variable):
    if isinstance(variable.initial, list):
        return ArrayValue(variable.type, list(variable.initial))
    return start_of(variable.type) if variable.initial is None else variable.initial


def start_of(of):
    """The value of a variable without a declared one."""
    if isinstance(of, types.Array):
        size = math.prod(last - first + 1 for first, last in of.ranges)
        return ArrayValue(of, [start_of(of.element) for _ in range(size)])
    if isinstance(of, types.Struct):
        return {name: initial(member) for name, member in of.members.items()}
    if isinstance(of, types.Block):
        return Instance(of)
    if isinstance(of, types.Text):
        return ""
    return {"bool": False, "real": 0.0, "time": 0.0}.get(of.family, 0)


def copy(value):
    if isinstance(value, ArrayValue):
        return ArrayValue(value.type, [copy(item) for item in value.items])
    if isinstance(value, dict):
        return {name: copy(member) for name, member in value.items()}
    return value


def fit(value, of):
    """The value as a variable of this type holds it; a fault when it has no place there."""
    if isinstance(of, types.Text) and len(value) > of.length:
        raise Fault(f"a text of {len(value)} characters does not fit into {of}")
    if types.family(of) in ("bits", "integer") and not of.lowest <= value <= of.highest:
        raise Fault(f"{value} is no {of}")
    if types.family(of) == "real":
        return rounded(value, of)
    return value


def rounded(value, of):
    """The nearest number that a REAL or LREAL has."""
    try:
        near = struct.unpack("<f", struct.pack("<f", value))[0] if of.bits == 32 else float(value)
    except OverflowError:
        near = math.inf
    if not math.isfinite(near):
        raise Fault(f"a {of} overflows")
    return near
