"""The tree of a text. The checker fills in the members that have a default."""

import dataclasses


@dataclasses.dataclass
class Literal:
    line: int
    kind: str  # "integer", "based", "real", "text", "bool", "time"
    value: object
    prefix: str = ""  # the type in front of #
    type: object = None


@dataclasses.dataclass
class Name:
    line: int
    name: str
    type: object = None
    variable: object = None


@dataclasses.dataclass
class Member:
    line: int
    of: object
    name: str
    type: object = None


@dataclasses.dataclass
class Element:
    line: int
    of: object
    indices: list
    type: object = None


@dataclasses.dataclass
class Unary:
    line: int
    operator: str
    operand: object
    type: object = None


@dataclasses.dataclass
class Binary:
    line: int
    operator: str
    left: object
    right: object
    type: object = None


@dataclasses.dataclass
class Argument:
    line: int
    name: str  # empty for an argument by position
    value: object
    is_output: bool = False  # name => value


@dataclasses.dataclass
class Call:
    """A call of a function, or of an instance of a function block."""

    line: int
    name: str
    arguments: list
    type: object = None
    callee: object = None
    target: object = None  # the Name of the instance


@dataclasses.dataclass
class Assign:
    line: int
    target: object
    value: object


@dataclasses.dataclass
class If:
    line: int
    branches: list  # (condition, statements)
    otherwise: list


@dataclasses.dataclass
class Case:
    line: int
    selector: object
    branches: list  # ([(first, last) of literals], statements)
    otherwise: list


@dataclasses.dataclass
class For:
    line: int
    variable: Name
    first: object
    last: object
    step: object
    body: list


@dataclasses.dataclass
class While:
    line: int
    condition: object
    body: list


@dataclasses.dataclass
class Jump:
    line: int
    kind: str  # "RETURN", "EXIT", "CONTINUE"


@dataclasses.dataclass
class TypeName:
    line: int
    name: str
    length: int = 0  # of a STRING


@dataclasses.dataclass
class ArrayOf:
    line: int
    ranges: list  # (first, last)
    element: object


@dataclasses.dataclass
class StructOf:
    line: int
    members: list  # Declaration


@dataclasses.dataclass
class Declaration:
    line: int
    name: str
    of: object  # TypeName, ArrayOf or StructOf
    initial: object = None
    section: str = ""
    is_constant: bool = False


@dataclasses.dataclass
class TypeDeclaration:
    line: int
    name: str
    of: object


@dataclasses.dataclass
class Unit:
    """A program organisation unit."""

    line: int
    kind: str  # "FUNCTION", "FUNCTION_BLOCK", "PROGRAM"
    name: str
    result: object
    declarations: list
    body: list
