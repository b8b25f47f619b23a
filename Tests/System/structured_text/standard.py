"""The standard's functions, as far as they mean the same in every tool."""

import dataclasses

from . import types
from .lexer import Refused
from .values import Fault, fit

# Names that a program may not give to its own things: some tools keep them as keywords.
RESERVED = frozenset("""
    ABS ACOS ADD ASIN ATAN ATAN2 CEIL CONCAT COS CTD CTU CTUD DELETE DIV EQ EXP EXPT FIND FLOOR F_TRIG GE GT INSERT LE LEFT LEN
    LIMIT LN LOG LT MAX MID MIN MOVE MUL MUX NE REPLACE RIGHT ROL ROR ROUND RS R_TRIG SEL SHL SHR SIN SIZEOF SQRT SR SUB TAN TOF
    TON TP TRUNC
""".split())


@dataclasses.dataclass
class Function:
    """`type_of`: the type of the result for these types of the arguments, or None; `run`: the result."""

    type_of: object
    run: object
    wanted: tuple  # the type of a literal, or None, for each argument


def find(name):
    """The standard function of this name, or None."""
    name = name.upper()
    return FUNCTIONS.get(name) or _conversion(name)


def is_reserved(name):
    return name.upper() in RESERVED or _conversion(name.upper(), is_name_only=True) is not None


def _shift(move):
    def type_of(value, count):
        return value if types.family(value) == "bits" and types.family(count) == "integer" else None

    def run(arguments, of):
        value, count = arguments
        if count < 0:
            raise Fault(f"a shift by {count} bits")
        return move(value, count, of.bits) & of.highest

    return Function(type_of, run, (None, types.INT))


def _rotated(value, count, bits):
    count %= bits
    return value << count | value >> (bits - count)


def _texts(count, length_of):
    """A function of `count` texts, and integers behind them."""
    def check(*found):
        if not all(isinstance(one, types.Text) for one in found[:count]):
            return None
        if not all(types.family(one) == "integer" for one in found[count:]):
            return None
        return length_of(*found)

    return check


def _mid(arguments, _):
    text, length, first = arguments
    if length < 0 or first < 1 or first + length > len(text) + 1:
        raise Fault(f"{length} characters from {first} of a text with {len(text)}")
    return text[first - 1:first - 1 + length]


def _find(arguments, _):
    text, part = arguments
    if not part:
        raise Fault("a search for nothing")
    return text.find(part) + 1


FUNCTIONS = {
    "SHL": _shift(lambda value, count, bits: value << count),
    "SHR": _shift(lambda value, count, bits: value >> count),
    "ROL": _shift(_rotated),
    "LEN": Function(_texts(1, lambda text: types.INT), lambda arguments, _: len(arguments[0]), (None,)),
    "MID": Function(_texts(1, lambda text, length, first: text), _mid, (None, types.INT, types.INT)),
    "FIND": Function(_texts(2, lambda text, part: types.INT), _find, (None, None)),
    "CONCAT": Function(_texts(2, lambda one, other: types.Text(one.length + other.length)),
                       lambda arguments, _: arguments[0] + arguments[1], (None, None)),
}


def _conversion(name, is_name_only=False):
    source, separator, target = name.partition("_TO_")
    source, target = types.ELEMENTARY.get(source), types.ELEMENTARY.get(target)
    if not separator or source is None or target is None or source is target:
        return None
    convert = _converter(source, target)
    if convert is None and not is_name_only:
        raise Refused(0, f"{name}, which tools do differently")
    return Function(lambda found: target if found is source else None, lambda arguments, _: convert(arguments[0]), (source,))


def _converter(source, target):
    kinds = source.family, target.family
    if kinds == ("bits", "bits"):
        return lambda value: value & target.highest
    if kinds == ("bits", "integer") and source.bits == target.bits:
        return lambda value: value - (1 << target.bits) if value > target.highest else value
    if kinds == ("integer", "bits") and source.bits == target.bits:
        return lambda value: value & target.highest
    if kinds in (("integer", "integer"), ("integer", "real"), ("real", "real")):
        return lambda value: fit(value, target)
    return None
