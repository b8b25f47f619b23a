"""Words of Structured Text."""

import dataclasses
import re

KEYWORDS = frozenset("""
    ABSTRACT ACTION AND ARRAY AT BOOL BY BYTE CASE CHAR CLASS CONFIGURATION CONSTANT CONTINUE DATE DATE_AND_TIME DINT DO DT DWORD
    ELSE ELSIF END_ACTION END_CASE END_CLASS END_CONFIGURATION END_FOR END_FUNCTION END_FUNCTION_BLOCK END_IF END_INTERFACE
    END_METHOD END_NAMESPACE END_PROGRAM END_REPEAT END_RESOURCE END_STEP END_STRUCT END_TRANSITION END_TYPE END_VAR END_WHILE
    EXIT EXTENDS FALSE FINAL FOR FROM FUNCTION FUNCTION_BLOCK F_EDGE IF IMPLEMENTS INITIAL_STEP INT INTERFACE INTERNAL INTERVAL
    LDATE LDATE_AND_TIME LDT LINT LREAL LTIME LTIME_OF_DAY LTOD LWORD METHOD MOD NAMESPACE NON_RETAIN NOT NULL OF ON OR OVERLAP
    OVERRIDE PRIORITY PRIVATE PROGRAM PROTECTED PUBLIC READ_ONLY READ_WRITE REAL REF REF_TO REPEAT RESOURCE RETAIN RETURN R_EDGE
    SINGLE SINT STEP STRING STRUCT SUPER TASK THEN THIS TIME TIME_OF_DAY TO TOD TRANSITION TRUE TYPE UDINT UINT ULINT UNTIL USING
    USINT VAR VAR_ACCESS VAR_CONFIG VAR_EXTERNAL VAR_GLOBAL VAR_INPUT VAR_IN_OUT VAR_OUTPUT VAR_TEMP WCHAR WHILE WITH WORD
    WSTRING XOR
    CAL CALC CALCN EN ENO JMP JMPC JMPCN LD LDN RET RETC RETCN ST STN
""".split())  # the last line: Instruction List and graphics, which many tools keep as keywords of every language

SYMBOLS = re.compile(r":=|=>|<>|<=|>=|\.\.|[()\[\],;:.+\-*/=<>&]")
WORD = re.compile(r"[A-Za-z_][A-Za-z_0-9]*")
LEGAL_WORD = re.compile(r"_?[A-Za-z0-9]+(_[A-Za-z0-9]+)*")
REAL = re.compile(r"[0-9](?:_?[0-9])*\.[0-9](?:_?[0-9])*(?:E[+-]?[0-9]+)?")
BASED = re.compile(r"(2|8|16)#([0-9A-F](?:_?[0-9A-F])*)")
DECIMAL = re.compile(r"[0-9](?:_?[0-9])*")
TIME = re.compile(r"(?:TIME|T)#((?:[0-9]+(?:\.[0-9]+)?(?:ms|d|h|m|s))+)(?![A-Za-z0-9_])", re.IGNORECASE)
TIME_PART = re.compile(r"([0-9]+(?:\.[0-9]+)?)(ms|d|h|m|s)", re.IGNORECASE)
SECONDS = {"d": 86400, "h": 3600, "m": 60, "s": 1, "ms": 0.001}
TEXT = re.compile(r"'((?:\$(?:[$'LNPRT]|[0-9A-F]{2})|[^$'\n])*)'")
ESCAPE = re.compile(r"\$([$'LNPRT]|[0-9A-F]{2})")
ESCAPED = {"$": "$", "'": "'", "L": "\n", "N": "\n", "P": "\f", "R": "\r", "T": "\t"}


class Refused(Exception):
    """The text is not in the accepted part of the standard."""

    def __init__(self, line, text):
        super().__init__(f"line {line}: {text}")


@dataclasses.dataclass(frozen=True)
class Token:
    """`kind`: a keyword or symbol itself, or "name", "integer", "based", "real", "text", "time", "type#", "end"."""

    kind: str
    value: object
    line: int


def tokens(source):
    found, at, line = [], 0, 1
    if not source.isascii():
        raise Refused(1 + source[:next(i for i, char in enumerate(source) if not char.isascii())].count("\n"),
                      "only ASCII is the same in every tool")
    while at < len(source):
        if source[at] in " \t\r\n":
            line += source[at] == "\n"
            at += 1
        elif source.startswith("(*", at):
            end = _end_of_comment(source, at, line)
            line += source.count("\n", at, end)
            at = end
        elif source.startswith("//", at):
            at = (source + "\n").index("\n", at)
        else:
            token, at = _token(source, at, line)
            found.append(token)
    return found + [Token("end", "the end of the text", line)]


def _end_of_comment(source, at, line):
    end = source.find("*)", at + 2)
    if end < 0:
        raise Refused(line, "a comment does not end")
    if "(*" in source[at + 2:end]:
        raise Refused(line, "a comment in a comment, which tools read differently")
    return end + 2


def _token(source, at, line):
    for pattern, make in ((TIME, _time), (WORD, _word), (REAL, _real), (BASED, _based), (DECIMAL, _decimal), (TEXT, _text)):
        match = pattern.match(source, at)
        if match:
            token = make(match, line)
            end = match.end()
            if token.kind == "name" and source.startswith("#", end):
                return Token("type#", token.value.upper(), line), end + 1
            if token.kind in ("integer", "based", "real") and WORD.match(source, end):
                raise Refused(line, f"a number runs into a word: {source[at:end + 1]}")
            return token, end
    symbol = SYMBOLS.match(source, at)
    if not symbol:
        raise Refused(line, f"no word of the language begins with {source[at]!r}")
    return Token(symbol.group(), symbol.group(), line), symbol.end()


def _word(match, line):
    word = match.group()
    is_prefix = match.string.startswith("#", match.end())
    if word.upper() in KEYWORDS and not is_prefix:
        return Token(word.upper(), word, line)
    if not LEGAL_WORD.fullmatch(word):
        raise Refused(line, f"{word}: underscores at the end or two in a row")
    return Token("name", word, line)


def _real(match, line):
    return Token("real", match.group().replace("_", ""), line)


def _based(match, line):
    base, digits = int(match[1]), match[2].replace("_", "")
    if any(int(digit, 16) >= base for digit in digits):
        raise Refused(line, f"{match.group()} has a digit that base {base} does not have")
    return Token("based", int(digits, base), line)


def _decimal(match, line):
    return Token("integer", int(match.group().replace("_", "")), line)


def _time(match, line):
    return Token("time", sum(float(number) * SECONDS[unit.lower()] for number, unit in TIME_PART.findall(match[1])), line)


def _text(match, line):
    if any(ord(char) < 32 or ord(char) > 126 for char in match[1]):
        raise Refused(line, "a text has a character that needs $ and its code")
    return Token("text", ESCAPE.sub(lambda one: ESCAPED.get(one[1]) or chr(int(one[1], 16)), match[1]), line)
