"""A strict interpreter of the part of IEC 61131-3 (3rd edition), Structured Text, that the host generates.

It is no PLC: it refuses everything outside of that part, and everything in it on which tools for PLCs differ. In
particular it converts nothing by itself, takes bit strings and integers of one width only, wants declarations before
their use, plain ASCII and the length of every STRING, and reports an integer overflow, a text that is cut and an index
out of range as errors. What it accepts and runs, any tool for the 3rd edition should accept and run alike.

    machine = Machine(compile_text(source))
    program = machine.program("Main")
    program.set("registers[66]", 7)
    machine.cycle(program, seconds=0.01)
    program.get("decode.fits")
"""

from .checker import check
from .evaluator import Machine
from .lexer import Refused
from .parser import parse
from .values import Fault


def compile_text(source):
    """The checked units of a text. Raises `Refused` with the line of what the standard does not have."""
    return check(parse(source))


__all__ = ["Fault", "Machine", "Refused", "compile_text"]
