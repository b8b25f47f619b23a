"""Rules for names and types. Fills in the types of a tree."""

import dataclasses

from . import standard, syntax, types
from .lexer import Refused
from .types import BOOL, Array, Block, Struct, Text, Variable, are_same, family
from .values import rounded

LONGEST_NAME = 32
LONGEST_TEXT = 254
NUMBERS = ("integer", "based", "real")


@dataclasses.dataclass
class Library:
    """What a text declares, by names in capitals."""

    types: dict = dataclasses.field(default_factory=dict)
    blocks: dict = dataclasses.field(default_factory=lambda: {"TON": types.TON})

    def has(self, name):
        return name in self.types or name in self.blocks


def check(units):
    library = Library()
    for unit in units:
        checker = Checker(library)
        if isinstance(unit, syntax.TypeDeclaration):
            checker.declare_type(unit)
        else:
            checker.declare_unit(unit)
    return library


class Checker:
    """Checks one declaration. A name must be declared before its use, which rules recursion out."""

    def __init__(self, library, block=None):
        self.library = library
        self.block = block
        self.controls = []  # the variables of the loops around a statement
        self.loops = 0

    # Declarations.

    def new_name(self, line, name, known):
        key = name.upper()
        if len(name) > LONGEST_NAME:
            raise Refused(line, f"{name} is longer than {LONGEST_NAME} characters")
        if standard.is_reserved(key):
            raise Refused(line, f"{name} is a name of the standard")
        if key in known or self.library.has(key):
            raise Refused(line, f"{name} is declared twice")
        return key

    def declare_type(self, declaration):
        key = self.new_name(declaration.line, declaration.name, ())
        if isinstance(declaration.of, syntax.StructOf):
            members = {}
            for member in declaration.of.members:
                name = self.new_name(member.line, member.name, members)
                members[name] = self.variable(member)
                if isinstance(members[name].type, Block):
                    raise Refused(member.line, "a function block in a STRUCT")
            self.library.types[key] = Struct(declaration.name, members)
            return
        found = self.type_of(declaration.of)
        if not isinstance(found, Array) or not isinstance(declaration.of, syntax.ArrayOf):
            raise Refused(declaration.line, "only a STRUCT and an ARRAY get a name of their own")
        found.name = declaration.name
        self.library.types[key] = found

    def type_of(self, of):
        if isinstance(of, syntax.ArrayOf):
            element = self.type_of(of.element)
            if isinstance(element, Block):
                raise Refused(of.line, "an ARRAY of function blocks")
            if any(first > last for first, last in of.ranges):
                raise Refused(of.line, "an ARRAY that ends before it begins")
            return Array(of.ranges, element)
        if of.name == "STRING":
            if not 1 <= of.length <= LONGEST_TEXT:
                raise Refused(of.line, f"a STRING has 1 to {LONGEST_TEXT} characters in every tool")
            return Text(of.length)
        key = of.name.upper()
        found = types.ELEMENTARY.get(key) or self.library.types.get(key) or self.library.blocks.get(key)
        if found is None or isinstance(found, Block) and found.kind != "FUNCTION_BLOCK":
            raise Refused(of.line, f"{of.name} is no type")
        return found

    def variable(self, declaration):
        found = Variable(declaration.name, self.type_of(declaration.of), declaration.section, declaration.is_constant)
        if isinstance(found.type, Block) and declaration.section != "VAR":
            raise Refused(declaration.line, "function blocks are declared in VAR only")
        if declaration.initial is not None:
            if declaration.section == "VAR_IN_OUT":
                raise Refused(declaration.line, "a VAR_IN_OUT has no initial value")
            found.initial = self.initial(declaration, found.type)
        elif declaration.is_constant:
            raise Refused(declaration.line, f"the constant {declaration.name} has no value")
        return found

    def initial(self, declaration, of):
        given = declaration.initial
        if not isinstance(given, list):
            self.must_be(given, of)
            return given.value
        size = 1
        for first, last in of.ranges if isinstance(of, Array) else ():
            size *= last - first + 1
        if not isinstance(of, Array) or len(given) != size:
            raise Refused(declaration.line, f"{len(given)} initial values for {of}")
        for one in given:
            self.must_be(one, of.element)
        return [one.value for one in given]

    def declare_unit(self, unit):
        key = self.new_name(unit.line, unit.name, ())
        block = Block(unit.name, unit.kind, {})
        self.block = block
        if unit.result is not None:
            block.result = Variable(unit.name, self.type_of(unit.result), "result")
            block.variables[key] = block.result
        for declaration in unit.declarations:
            name = self.new_name(declaration.line, declaration.name, {*block.variables, key})
            variable = self.variable(declaration)
            if isinstance(variable.type, Block) and unit.kind == "FUNCTION":
                raise Refused(declaration.line, "a FUNCTION keeps nothing between its calls, and has no function blocks")
            block.variables[name] = variable
        self.statements(unit.body)
        if block.result is not None and not _assigns(unit.body, key):
            raise Refused(unit.line, f"{unit.name} never gets its result")
        block.body = unit.body
        self.library.blocks[key] = block

    # Statements.

    def statements(self, found):
        for statement in found:
            getattr(self, "check_" + type(statement).__name__.lower())(statement)

    def check_assign(self, statement):
        of = self.check_target(statement.target)
        self.must_be(statement.value, of)

    def check_target(self, target):
        of = self.type_of_expression(target)
        root = target
        while not isinstance(root, syntax.Name):
            root = root.of
            if isinstance(root.type, Block):
                raise Refused(target.line, "a variable of a function block is assigned from outside")
        if isinstance(of, Block):
            raise Refused(target.line, f"{root.name} is a function block")
        if root.variable.is_constant or root.variable.section == "VAR_INPUT":
            raise Refused(target.line, f"{root.name} is a constant or an input")
        if root.variable in self.controls:
            raise Refused(target.line, f"{root.name} controls the loop around it")
        return of

    def check_if(self, statement):
        for condition, body in statement.branches:
            self.must_be(condition, BOOL)
            self.statements(body)
        self.statements(statement.otherwise)

    def check_case(self, statement):
        of = self.type_of_expression(statement.selector)
        if family(of) != "integer":
            raise Refused(statement.line, f"a CASE of {of}")
        seen = []
        for labels, body in statement.branches:
            for first, last in labels:
                self.must_be(first, of)
                self.must_be(last, of)
                if first.value > last.value or any(first.value <= end and begin <= last.value for begin, end in seen):
                    raise Refused(first.line, f"the label {first.value} is there before, or ends before it begins")
                seen.append((first.value, last.value))
            self.statements(body)
        self.statements(statement.otherwise)

    def check_for(self, statement):
        of = self.check_target(statement.variable)
        if family(of) != "integer":
            raise Refused(statement.line, f"a FOR with a {of}")
        for bound in (statement.first, statement.last, *([statement.step] if statement.step else [])):
            self.must_be(bound, of)
        if statement.step is not None and not (isinstance(statement.step, syntax.Literal) and statement.step.value != 0):
            raise Refused(statement.line, "the step of a FOR is a number other than 0")
        self.controls.append(statement.variable.variable)
        self.loop(statement.body)
        self.controls.pop()

    def check_while(self, statement):
        self.must_be(statement.condition, BOOL)
        self.loop(statement.body)

    def loop(self, body):
        self.loops += 1
        self.statements(body)
        self.loops -= 1

    def check_jump(self, statement):
        if statement.kind != "RETURN" and not self.loops:
            raise Refused(statement.line, f"{statement.kind} outside of a loop")

    def check_call(self, call):
        """As a statement: of an instance of a function block."""
        variable = self.block.variables.get(call.name.upper())
        if variable is None or not isinstance(variable.type, Block):
            raise Refused(call.line, f"{call.name} is no function block")
        call.target = syntax.Name(call.line, call.name, variable.type, variable)
        call.callee = variable.type
        self.named_arguments(call)

    # Expressions.

    def must_be(self, node, of):
        found = self.type_of_expression(node, of)
        if not are_same(found, of):
            raise Refused(node.line, f"{of} is expected, not {found}")
        if isinstance(node, syntax.Literal) and isinstance(of, Text) and len(node.value) > of.length:
            raise Refused(node.line, f"a text of {len(node.value)} characters does not fit into {of}")
        if isinstance(found, Block):
            raise Refused(node.line, "a function block is no value")

    def type_of_expression(self, node, wanted=None):
        """`wanted` is the type that a number without a type gets."""
        found = getattr(self, "type_of_" + type(node).__name__.lower())(node, wanted)
        node.type = found
        return found

    def type_of_literal(self, literal, wanted):
        if literal.kind == "text":
            return Text(len(literal.value))
        of = {"bool": BOOL, "time": types.TIME}.get(literal.kind, wanted)
        if literal.prefix:
            of = types.ELEMENTARY.get(literal.prefix)
            if of is None:
                raise Refused(literal.line, f"{literal.prefix} is no type of a number")
        if of is None:
            raise Refused(literal.line, f"the type of {literal.value} is open")
        if not _is_value(literal, of):
            raise Refused(literal.line, f"{literal.value} is no {of}")
        if literal.kind == "real":
            literal.value = rounded(float(literal.value), of)
        return of

    def type_of_name(self, node, _):
        node.variable = self.block.variables.get(node.name.upper())
        if node.variable is None:
            raise Refused(node.line, f"{node.name} is not declared")
        return node.variable.type

    def type_of_member(self, node, _):
        of = self.type_of_expression(node.of)
        if isinstance(of, Struct) and node.name.upper() in of.members:
            return of.members[node.name.upper()].type
        if isinstance(of, Block) and of.variables.get(node.name.upper()) in of.of("VAR_OUTPUT"):
            return of.variables[node.name.upper()].type
        raise Refused(node.line, f"{of} shows no {node.name}")

    def type_of_element(self, node, _):
        of = self.type_of_expression(node.of)
        if not isinstance(of, Array) or len(of.ranges) != len(node.indices):
            raise Refused(node.line, f"{of} with {len(node.indices)} indices")
        for index, (first, last) in zip(node.indices, of.ranges):
            if family(self.type_of_expression(index, types.ELEMENTARY["DINT"])) != "integer":
                raise Refused(node.line, f"an index of type {index.type}")
            if isinstance(index, syntax.Literal) and not first <= index.value <= last:
                raise Refused(node.line, f"the index {index.value} is not in {first} to {last}")
        return of.element

    def type_of_unary(self, node, wanted):
        of = self.type_of_expression(node.operand, wanted)
        allowed = ("bool", "bits") if node.operator == "NOT" else ("integer", "real")
        if family(of) not in allowed or node.operator == "-" and family(of) == "integer" and not of.is_signed:
            raise Refused(node.line, f"{node.operator} of {of}")
        return of

    def type_of_binary(self, node, wanted):
        is_comparison = node.operator in ("=", "<>", "<", ">", "<=", ">=")
        wanted = None if is_comparison else wanted
        first, second = node.left, node.right
        if _has_open_type(first):
            first, second = second, first
        of = self.type_of_expression(first, wanted)
        other = self.type_of_expression(second, of)
        if not are_same(of, other) or not _has_operator(of, node.operator):
            raise Refused(node.line, f"{node.left.type} {node.operator} {node.right.type}")
        return BOOL if is_comparison else of

    def type_of_call(self, call, _):
        call.callee = self.library.blocks.get(call.name.upper())
        if call.callee is not None and call.callee.kind == "FUNCTION":
            self.named_arguments(call)
            return call.callee.result.type
        call.callee = self.standard_function(call)
        if any(argument.name for argument in call.arguments) or len(call.arguments) != len(call.callee.wanted):
            raise Refused(call.line, f"{call.name} has {len(call.callee.wanted)} arguments, by position")
        found = [self.type_of_expression(argument.value, wanted)
                 for argument, wanted in zip(call.arguments, call.callee.wanted)]
        of = call.callee.type_of(*found)
        if of is None:
            raise Refused(call.line, f"{call.name} of {', '.join(map(str, found))}")
        return of

    @staticmethod
    def standard_function(call):
        try:
            found = standard.find(call.name)
        except Refused as refused:
            raise Refused(call.line, str(refused).partition(": ")[2]) from None
        if found is None:
            raise Refused(call.line, f"{call.name} is no function")
        return found

    def named_arguments(self, call):
        """A FUNCTION needs all arguments; a function block keeps those inputs that are missing."""
        seen = set()
        for argument in call.arguments:
            variable = call.callee.variables.get(argument.name.upper())
            sections = ("VAR_OUTPUT",) if argument.is_output else ("VAR_INPUT", "VAR_IN_OUT")
            if variable is None or variable.section not in sections or argument.name.upper() in seen:
                raise Refused(argument.line, f"{call.name} has no such argument, or twice: {argument.name}")
            seen.add(argument.name.upper())
            if variable.section == "VAR_INPUT":
                self.must_be(argument.value, variable.type)
            else:
                self.must_refer(argument, variable)
        needed = call.callee.of("VAR_IN_OUT", *(["VAR_INPUT"] if call.callee.kind == "FUNCTION" else []))
        for variable in needed:
            if variable.name.upper() not in seen:
                raise Refused(call.line, f"{call.name} is called without {variable.name}")

    def must_refer(self, argument, variable):
        if not isinstance(argument.value, (syntax.Name, syntax.Member, syntax.Element)):
            raise Refused(argument.line, f"{argument.name} needs a variable")
        of = self.check_target(argument.value)
        if of is not variable.type and of != variable.type:
            raise Refused(argument.line, f"{argument.name} is {variable.type}, not {of}")


def _assigns(statements, key):
    """Whether a statement somewhere assigns the variable."""
    for statement in statements:
        if isinstance(statement, syntax.Assign) and isinstance(statement.target, syntax.Name) and statement.target.name.upper() == key:
            return True
        bodies = [getattr(statement, "otherwise", []), getattr(statement, "body", [])]
        bodies += [body for _, body in getattr(statement, "branches", [])]
        if any(_assigns(body, key) for body in bodies):
            return True
    return False


def _has_open_type(node):
    """Whether an expression has only numbers without a type."""
    if isinstance(node, syntax.Binary):
        return _has_open_type(node.left) and _has_open_type(node.right)
    return isinstance(node, syntax.Literal) and node.kind in NUMBERS and not node.prefix


def _is_value(literal, of):
    kinds = {"bool": ("bool",), "bits": ("integer", "based"), "integer": ("integer", "based"), "real": ("real",), "time": ("time",)}
    if literal.kind not in kinds.get(family(of), ()):
        return False
    return literal.kind not in ("integer", "based") or of.lowest <= literal.value <= of.highest


def _has_operator(of, operator):
    if operator in ("=", "<>"):
        return isinstance(of, (types.Elementary, Text))
    if operator in ("AND", "OR", "XOR"):
        return family(of) in ("bool", "bits")
    if operator == "MOD":
        return family(of) == "integer"
    if operator in ("<", ">", "<=", ">="):
        return family(of) in ("integer", "real", "time")
    return family(of) in ("integer", "real")
