"""Runs checked units."""

from . import syntax, types
from .checker import Checker
from .parser import parse_expression
from .values import ArrayValue, Fault, Instance, copy, fit, initial

MOST_ROUNDS = 100_000  # of a WHILE: a PLC would stop with its watchdog


class _Return(Exception):
    pass


class _Exit(Exception):
    pass


class _Continue(Exception):
    pass


class _Reference:
    """Where a VAR_IN_OUT lies."""

    def __init__(self, holder, key):
        self.holder = holder
        self.key = key


class Machine:
    """A PLC with a clock of its own, in seconds, which only `cycle` moves."""

    def __init__(self, library):
        self.library = library
        self.now = 0.0

    def program(self, name):
        block = self.library.blocks[name.upper()]
        if block.kind != "PROGRAM":
            raise KeyError(name)
        return Program(self, block)

    def cycle(self, program, seconds=0.01):
        """Runs a program once; the clock has moved by `seconds` before."""
        self.now += seconds
        Frame(self, program.instance.block, program.instance.values).run()


class Program:
    """A program, with access to its variables from outside by texts such as `decode.map.width`."""

    def __init__(self, machine, block):
        self.machine = machine
        self.instance = Instance(block)

    def _frame(self):
        return Frame(self.machine, self.instance.block, self.instance.values)

    def _tree(self, text):
        tree = parse_expression(text)
        Checker(self.machine.library, self.instance.block).type_of_expression(tree)
        return tree

    def get(self, text):
        value = self._frame().value(self._tree(text))
        return value.items if isinstance(value, ArrayValue) else value

    def set(self, text, value):
        """An array takes a list of all its elements."""
        tree = self._tree(text)
        if isinstance(tree.type, types.Array):
            held = self._frame().value(tree)
            if len(value) != len(held.items):
                raise ValueError(f"{text} has {len(held.items)} elements, not {len(value)}")
            held.items[:] = [fit(one, tree.type.element) for one in value]
            return
        self._frame().assign(tree, value)


class Frame:
    """One call of a unit."""

    def __init__(self, machine, block, variables):
        self.machine = machine
        self.block = block
        self.variables = variables

    def run(self):
        try:
            self.statements(self.block.body)
        except _Return:
            pass

    # Statements.

    def statements(self, found):
        for statement in found:
            STATEMENTS[type(statement)](self, statement)

    def run_assign(self, statement):
        self.assign(statement.target, copy(self.value(statement.value)))

    def assign(self, target, value):
        holder, key = self.place(target)
        holder[key] = fit(value, target.type)

    def run_if(self, statement):
        for condition, body in statement.branches:
            if self.value(condition):
                self.statements(body)
                return
        self.statements(statement.otherwise)

    def run_case(self, statement):
        selector = self.value(statement.selector)
        for labels, body in statement.branches:
            if any(first.value <= selector <= last.value for first, last in labels):
                self.statements(body)
                return
        self.statements(statement.otherwise)

    def run_for(self, statement):
        first, last = self.value(statement.first), self.value(statement.last)
        step = self.value(statement.step) if statement.step else 1
        holder, key = self.place(statement.variable)
        for index in range(first, last + (1 if step > 0 else -1), step):
            holder[key] = index
            if not self.round(statement.body):
                break
        holder[key] = None  # tools leave different numbers there

    def run_while(self, statement):
        rounds = 0
        while self.value(statement.condition):
            rounds += 1
            if rounds > MOST_ROUNDS:
                raise Fault(f"line {statement.line}: a loop without an end")
            if not self.round(statement.body):
                break

    def round(self, body):
        try:
            self.statements(body)
        except _Exit:
            return False
        except _Continue:
            pass
        return True

    def run_jump(self, statement):
        raise {"RETURN": _Return, "EXIT": _Exit, "CONTINUE": _Continue}[statement.kind]

    def run_call(self, call):
        """An instance of a function block."""
        holder, key = self.place(call.target)
        instance = holder[key]
        frame = self.called(call, instance.block, instance.values)
        if instance.block is types.TON:
            frame.run_timer()
        else:
            frame.run()
        for argument in call.arguments:
            if argument.is_output:
                self.assign(argument.value, copy(instance.values[argument.name.upper()]))

    def called(self, call, block, variables):
        for argument in call.arguments:
            variable = block.variables[argument.name.upper()]
            if variable.section == "VAR_INPUT":
                variables[argument.name.upper()] = fit(copy(self.value(argument.value)), variable.type)
            elif variable.section == "VAR_IN_OUT":
                variables[argument.name.upper()] = _Reference(*self.place(argument.value))
        return Frame(self.machine, block, variables)

    def run_timer(self):
        own = self.variables
        if not own["IN"]:
            own["BEGAN"] = -1.0
        elif own["BEGAN"] < 0:
            own["BEGAN"] = self.machine.now
        own["ET"] = min(self.machine.now - own["BEGAN"], own["PT"]) if own["IN"] else 0.0
        own["Q"] = own["IN"] and own["ET"] >= own["PT"]

    # Expressions.

    def place(self, node):
        """The object that holds the variable, and its key there."""
        if isinstance(node, syntax.Name):
            key = node.name.upper()
            held = self.variables[key]
            return (held.holder, held.key) if isinstance(held, _Reference) else (self.variables, key)
        holder, key = self.place(node.of)
        if isinstance(node, syntax.Member):
            held = holder[key]
            return (held.values if isinstance(held, Instance) else held), node.name.upper()
        held = holder[key]
        return held.items, held.place([self.value(index) for index in node.indices])

    def value(self, node):
        return EXPRESSIONS[type(node)](self, node)

    def value_of_literal(self, literal):
        return literal.value

    def value_of_variable(self, node):
        holder, key = self.place(node)
        if holder[key] is None:
            raise Fault(f"line {node.line}: the variable of a loop after its end")
        return holder[key]

    def value_of_unary(self, node):
        value = self.value(node.operand)
        if node.operator == "-":
            return fit(-value, node.type)
        return not value if node.type is types.BOOL else value ^ node.type.highest

    def value_of_binary(self, node):
        left, right = self.value(node.left), self.value(node.right)  # both: tools differ in whether they skip the second
        if node.operator in ("/", "MOD") and right == 0:
            raise Fault(f"line {node.line}: a division by 0")
        try:
            return fit(OPERATORS[node.operator](left, right), node.type)
        except Fault as fault:
            raise Fault(f"line {node.line}: {fault}") from None

    def value_of_call(self, call):
        if not isinstance(call.callee, types.Block):
            return call.callee.run([self.value(argument.value) for argument in call.arguments], call.type)
        block = call.callee
        variables = {key: initial(variable) for key, variable in block.variables.items() if variable.section != "VAR_IN_OUT"}
        self.called(call, block, variables).run()
        return variables[block.name.upper()]


def _quotient(left, right):
    if isinstance(left, float):
        return left / right
    size = abs(left) // abs(right)
    return size if (left < 0) == (right < 0) else -size


OPERATORS = {
    "+": lambda left, right: left + right,
    "-": lambda left, right: left - right,
    "*": lambda left, right: left * right,
    "/": _quotient,
    "MOD": lambda left, right: left - right * _quotient(left, right),
    "AND": lambda left, right: left & right,
    "OR": lambda left, right: left | right,
    "XOR": lambda left, right: left ^ right,
    "=": lambda left, right: left == right,
    "<>": lambda left, right: left != right,
    "<": lambda left, right: left < right,
    ">": lambda left, right: left > right,
    "<=": lambda left, right: left <= right,
    ">=": lambda left, right: left >= right,
}
STATEMENTS = {syntax.Assign: Frame.run_assign, syntax.If: Frame.run_if, syntax.Case: Frame.run_case, syntax.For: Frame.run_for,
              syntax.While: Frame.run_while, syntax.Jump: Frame.run_jump, syntax.Call: Frame.run_call}
EXPRESSIONS = {syntax.Literal: Frame.value_of_literal, syntax.Name: Frame.value_of_variable, syntax.Member: Frame.value_of_variable,
               syntax.Element: Frame.value_of_variable, syntax.Unary: Frame.value_of_unary, syntax.Binary: Frame.value_of_binary,
               syntax.Call: Frame.value_of_call}
