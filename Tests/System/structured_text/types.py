"""Types."""

import dataclasses


@dataclasses.dataclass(frozen=True)
class Elementary:
    name: str
    family: str  # "bool", "bits", "integer", "real", "time"
    bits: int = 0
    is_signed: bool = False

    def __str__(self):
        return self.name

    @property
    def lowest(self):
        return -(1 << (self.bits - 1)) if self.is_signed else 0

    @property
    def highest(self):
        return (1 << (self.bits - self.is_signed)) - 1


@dataclasses.dataclass(frozen=True)
class Text:
    """STRING[length]. Texts of every length are assigned to each other; one that does not fit is a fault."""

    length: int

    def __str__(self):
        return f"STRING[{self.length}]"


@dataclasses.dataclass(eq=False)
class Array:
    """Two arrays have one type only if one name declares it."""

    ranges: list
    element: object
    name: str = "ARRAY"

    def __str__(self):
        return self.name


@dataclasses.dataclass(eq=False)
class Struct:
    name: str
    members: dict  # of the name in capitals: Variable

    def __str__(self):
        return self.name


@dataclasses.dataclass(eq=False)
class Variable:
    name: str
    type: object
    section: str = ""
    is_constant: bool = False
    initial: object = None


@dataclasses.dataclass(eq=False)
class Block:
    """A function, a type of function blocks or a program."""

    name: str
    kind: str
    variables: dict  # of the name in capitals: Variable
    body: list = dataclasses.field(default_factory=list)
    result: Variable = None

    def __str__(self):
        return self.name

    def of(self, *sections):
        return [variable for variable in self.variables.values() if variable.section in sections]


BOOL = Elementary("BOOL", "bool", 1)
TIME = Elementary("TIME", "time")
ELEMENTARY = {one.name: one for one in (
    BOOL, TIME,
    *(Elementary(name, "bits", bits) for name, bits in (("BYTE", 8), ("WORD", 16), ("DWORD", 32), ("LWORD", 64))),
    *(Elementary(name, "integer", bits, True) for name, bits in (("SINT", 8), ("INT", 16), ("DINT", 32), ("LINT", 64))),
    *(Elementary(name, "integer", bits) for name, bits in (("USINT", 8), ("UINT", 16), ("UDINT", 32), ("ULINT", 64))),
    *(Elementary(name, "real", bits) for name, bits in (("REAL", 32), ("LREAL", 64))))}
INT = ELEMENTARY["INT"]


def family(one):
    return one.family if isinstance(one, Elementary) else ""


def are_same(one, other):
    return one is other or isinstance(one, Text) and isinstance(other, Text)


def names(*variables):
    return {variable.name.upper(): variable for variable in variables}


TON = Block("TON", "FUNCTION_BLOCK", names(
    Variable("IN", BOOL, "VAR_INPUT"), Variable("PT", TIME, "VAR_INPUT"),
    Variable("Q", BOOL, "VAR_OUTPUT"), Variable("ET", TIME, "VAR_OUTPUT"), Variable("began", TIME, "VAR", initial=-1.0)))
