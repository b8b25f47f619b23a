"""Texts of Structured Text into trees."""

from . import syntax
from .lexer import Refused, tokens

ELEMENTARY = ("BOOL", "BYTE", "WORD", "DWORD", "LWORD", "SINT", "INT", "DINT", "LINT", "USINT", "UINT", "UDINT", "ULINT",
              "REAL", "LREAL", "TIME", "STRING")
SECTIONS = {"FUNCTION": ("VAR_INPUT", "VAR_OUTPUT", "VAR_IN_OUT", "VAR"),
            "FUNCTION_BLOCK": ("VAR_INPUT", "VAR_OUTPUT", "VAR_IN_OUT", "VAR"),
            "PROGRAM": ("VAR",)}
COMPARISONS = (("=", "<>"), ("<", ">", "<=", ">="))


def parse(source):
    """The declarations of types and the units, in their order."""
    return _Parser(tokens(source)).units()


def parse_expression(source):
    parser = _Parser(tokens(source))
    found = parser.expression()
    parser.expect("end")
    return found


class _Parser:
    def __init__(self, words):
        self.words = words
        self.at = 0

    # Words.

    @property
    def word(self):
        return self.words[self.at]

    def next(self):
        word = self.word
        self.at += 1
        return word

    def accept(self, *kinds):
        return self.next() if self.word.kind in kinds else None

    def expect(self, *kinds):
        if self.word.kind not in kinds:
            raise Refused(self.word.line, f"{' or '.join(kinds)} is expected, not {self.word.value}")
        return self.next()

    # Declarations.

    def units(self):
        found = []
        while not self.accept("end"):
            if self.accept("TYPE"):
                found.append(self.type_declaration())
                while not self.accept("END_TYPE"):
                    found.append(self.type_declaration())
            else:
                found.append(self.unit(self.expect("FUNCTION", "FUNCTION_BLOCK", "PROGRAM", "TYPE")))
        return found

    def type_declaration(self):
        name = self.expect("name")
        self.expect(":")
        if self.word.kind == "STRUCT":
            of = self.struct()
        else:
            of = self.type_of_variable()
        self.expect(";")
        return syntax.TypeDeclaration(name.line, name.value, of)

    def struct(self):
        line = self.expect("STRUCT").line
        members = self.declarations_of_line("")
        while not self.accept("END_STRUCT"):
            members += self.declarations_of_line("")
        return syntax.StructOf(line, members)

    def type_of_variable(self):
        line = self.word.line
        if not self.accept("ARRAY"):
            return self.simple_type()
        self.expect("[")
        ranges = [self.range_of_array()]
        while self.accept(","):
            ranges.append(self.range_of_array())
        self.expect("]")
        self.expect("OF")
        return syntax.ArrayOf(line, ranges, self.simple_type())

    def range_of_array(self):
        first = self.bound()
        self.expect("..")
        return first, self.bound()

    def bound(self):
        sign = -1 if self.accept("-") else 1
        return sign * self.expect("integer").value

    def simple_type(self):
        word = self.expect("name", *ELEMENTARY)
        if word.kind != "STRING":
            return syntax.TypeName(word.line, word.value)
        if not self.accept("["):
            raise Refused(word.line, "a STRING without a length, which differs between tools")
        length = self.expect("integer").value
        self.expect("]")
        return syntax.TypeName(word.line, "STRING", length)

    def declarations_of_line(self, section, is_constant=False):
        """name {, name} : type [:= literal] ;"""
        names = [self.expect("name")]
        while self.accept(","):
            names.append(self.expect("name"))
        self.expect(":")
        of = self.type_of_variable()
        initial = self.initial() if self.accept(":=") else None
        self.expect(";")
        return [syntax.Declaration(name.line, name.value, of, initial, section, is_constant) for name in names]

    def initial(self):
        """A literal, or the elements of an array."""
        if not self.accept("["):
            return self.literal()
        elements = [self.literal()]
        while self.accept(","):
            elements.append(self.literal())
        self.expect("]")
        return elements

    def unit(self, word):
        name = self.expect("name")
        result = None
        if word.kind == "FUNCTION":
            self.expect(":")
            result = self.simple_type()
        declarations = []
        while self.word.kind.startswith("VAR"):
            declarations += self.section(word.kind)
        body = self.statements("END_" + word.kind)
        self.expect("END_" + word.kind)
        return syntax.Unit(word.line, word.kind, name.value, result, declarations, body)

    def section(self, unit_kind):
        section = self.expect(*SECTIONS[unit_kind]).kind
        is_constant = section == "VAR" and self.accept("CONSTANT") is not None
        found = []
        while not self.accept("END_VAR"):
            found += self.declarations_of_line(section, is_constant)
        return found

    # Statements.

    def statements(self, *ends):
        found = []
        while self.word.kind not in ends:
            found.append(self.statement())
            self.expect(";")
        return found

    def statement(self):
        word = self.word
        if self.accept("RETURN", "EXIT", "CONTINUE"):
            return syntax.Jump(word.line, word.kind)
        compound = {"IF": self.if_statement, "CASE": self.case_statement, "FOR": self.for_statement,
                    "WHILE": self.while_statement}.get(word.kind)
        if compound:
            self.next()
            return compound(word.line)
        name = self.expect("name")
        if self.word.kind == "(":
            return self.call(name)
        target = self.variable(name)
        self.expect(":=")
        return syntax.Assign(word.line, target, self.expression())

    def if_statement(self, line):
        branches, otherwise = [], []
        end = "IF"
        while end in ("IF", "ELSIF"):
            condition = self.expression()
            self.expect("THEN")
            branches.append((condition, self.statements("ELSIF", "ELSE", "END_IF")))
            end = self.next().kind
        if end == "ELSE":
            otherwise = self.statements("END_IF")
            self.expect("END_IF")
        return syntax.If(line, branches, otherwise)

    def case_statement(self, line):
        selector = self.expression()
        self.expect("OF")
        branches, otherwise = [], []
        while self.word.kind not in ("ELSE", "END_CASE"):
            labels = [self.label()]
            while self.accept(","):
                labels.append(self.label())
            self.expect(":")
            branches.append((labels, self.statements_of_branch()))
        if not branches:
            raise Refused(line, "a CASE without a branch")
        if self.accept("ELSE"):
            otherwise = self.statements("END_CASE")
        self.expect("END_CASE")
        return syntax.Case(line, selector, branches, otherwise)

    def statements_of_branch(self):
        """Until the next label: a number begins no statement."""
        return self.statements("ELSE", "END_CASE", "integer", "based", "-", "type#")

    def label(self):
        first = self.literal()
        return first, self.literal() if self.accept("..") else first

    def for_statement(self, line):
        name = self.expect("name")
        self.expect(":=")
        first = self.expression()
        self.expect("TO")
        last = self.expression()
        step = self.expression() if self.accept("BY") else None
        self.expect("DO")
        body = self.statements("END_FOR")
        self.expect("END_FOR")
        return syntax.For(line, syntax.Name(name.line, name.value), first, last, step, body)

    def while_statement(self, line):
        condition = self.expression()
        self.expect("DO")
        body = self.statements("END_WHILE")
        self.expect("END_WHILE")
        return syntax.While(line, condition, body)

    # Expressions, from the weakest operator to the strongest.

    def expression(self):
        return self.chain(self.xor_expression, "OR")

    def xor_expression(self):
        return self.chain(self.and_expression, "XOR")

    def and_expression(self):
        return self.chain(self.equality, "AND", "&")

    def equality(self):
        return self.chain(self.order, *COMPARISONS[0])

    def order(self):
        return self.chain(self.sum, *COMPARISONS[1])

    def sum(self):
        return self.chain(self.product, "+", "-")

    def product(self):
        return self.chain(self.unary, "*", "/", "MOD")

    def chain(self, operand, *operators):
        left = operand()
        while self.word.kind in operators:
            operator = self.next()
            left = syntax.Binary(operator.line, operator.kind.replace("&", "AND"), left, operand())
        return left

    def unary(self):
        operator = self.accept("-", "+", "NOT")
        if operator is None:
            return self.primary()
        if operator.kind != "NOT" and self.word.kind in ("integer", "real"):
            self.at -= 1
            return self.literal()
        if operator.kind == "+":
            raise Refused(operator.line, "a + in front of what is no number")
        return syntax.Unary(operator.line, operator.kind, self.primary())

    def primary(self):
        if self.accept("("):
            inner = self.expression()
            self.expect(")")
            return inner
        if self.word.kind != "name":
            return self.literal()
        name = self.next()
        return self.call(name) if self.word.kind == "(" else self.variable(name)

    def variable(self, name):
        found = syntax.Name(name.line, name.value)
        while self.word.kind in (".", "["):
            opening = self.next()
            if opening.kind == ".":
                found = syntax.Member(opening.line, found, self.expect("name").value)
                continue
            indices = [self.expression()]
            while self.accept(","):
                indices.append(self.expression())
            self.expect("]")
            found = syntax.Element(opening.line, found, indices)
        return found

    def call(self, name):
        self.expect("(")
        arguments = []
        if self.word.kind != ")":
            arguments.append(self.argument())
            while self.accept(","):
                arguments.append(self.argument())
        self.expect(")")
        return syntax.Call(name.line, name.value, arguments)

    def argument(self):
        line = self.word.line
        following = self.words[self.at + 1].kind if self.word.kind == "name" else ""
        if following not in (":=", "=>"):
            return syntax.Argument(line, "", self.expression())
        name = self.next().value
        self.next()
        if following == ":=":
            return syntax.Argument(line, name, self.expression())
        return syntax.Argument(line, name, self.variable(self.expect("name")), is_output=True)

    def literal(self):
        word = self.next()
        prefix = ""
        if word.kind == "type#":
            prefix, word = word.value, self.next()
        sign = 1
        if word.kind in ("-", "+"):
            sign = -1 if word.kind == "-" else 1
            word = self.next()
            if word.kind not in ("integer", "real"):
                raise Refused(word.line, f"a number is expected, not {word.value}")
        if word.kind in ("TRUE", "FALSE"):
            return syntax.Literal(word.line, "bool", word.kind == "TRUE", prefix)
        if word.kind == "real":
            return syntax.Literal(word.line, "real", ("-" if sign < 0 else "") + word.value, prefix)
        if word.kind in ("integer", "based"):
            return syntax.Literal(word.line, word.kind, sign * word.value, prefix)
        if word.kind in ("text", "time") and not prefix:
            return syntax.Literal(word.line, word.kind, word.value)
        raise Refused(word.line, f"a value is expected, not {word.value}")
