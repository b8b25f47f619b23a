"""The interpreter of Structured Text by itself: what it accepts, refuses, computes and reports as a fault."""

import math
import unittest

from structured_text import Fault, Machine, Refused, compile_text

TYPES = """
TYPE
  Words : ARRAY [10..13] OF WORD;
  Grid : ARRAY [0..1, 0..2] OF INT;
  Point : STRUCT
    x, y : REAL;
    label : STRING[8] := 'none';
  END_STRUCT;
  Line : STRUCT
    begin : Point;
    finish : Point;
  END_STRUCT;
END_TYPE
"""
VARIABLES = """
  b, c : BOOL;
  bt : BYTE;  w : WORD;  dw : DWORD;  lw : LWORD;
  si : SINT;  i : INT;  di : DINT;  l : LINT;
  us : USINT;  u : UINT;  ud : UDINT;  ul : ULINT;
  r : REAL;  lr : LREAL;
  s : STRING[10];  long : STRING[40];
  tm : TIME;
  words_1 : Words;  grid_1 : Grid;  line_1, line_2 : Line;
"""


def program(body, before="", variables=""):
    return f"{TYPES}{before}PROGRAM Main\nVAR{VARIABLES}{variables}END_VAR\n{body}\nEND_PROGRAM\n"


def run(body, before="", variables="", cycles=1, seconds=0.01):
    machine = Machine(compile_text(program(body, before, variables)))
    main = machine.program("Main")
    for _ in range(cycles):
        machine.cycle(main, seconds)
    return main


def function(name, declarations, body, result="INT"):
    return f"FUNCTION {name} : {result}\n{declarations}\n{body}\nEND_FUNCTION\n"


def block(name, declarations, body):
    return f"FUNCTION_BLOCK {name}\n{declarations}\n{body}\nEND_FUNCTION_BLOCK\n"


TWICE = function("Twice", "VAR_INPUT n : INT; END_VAR", "Twice := n * 2;")
COUNTER = block("Counter", "VAR_INPUT by_1 : INT := 1; END_VAR VAR_OUTPUT total : INT; END_VAR VAR hidden : INT; END_VAR",
                "total := total + by_1; hidden := total;")
SWAP = block("Swap", "VAR_IN_OUT p, q : WORD; END_VAR VAR t_1 : WORD; END_VAR", "t_1 := p; p := q; q := t_1;")

# The statement, the variable, its value afterwards.
VALUES = (
    # Precedence, from the strongest.
    ("i := 2 + 3 * 4;", "i", 14),
    ("i := (2 + 3) * 4;", "i", 20),
    ("i := 20 - 5 - 3;", "i", 12),
    ("i := 100 / 10 / 2;", "i", 5),
    ("i := -2 * 3;", "i", -6),
    ("i := 3; i := -i + 10;", "i", 7),
    ("b := 1 + 1 = i + 2;", "b", True),
    ("b := i < 1 = TRUE;", "b", True),  # < before =
    ("b := TRUE OR FALSE AND FALSE;", "b", True),
    ("b := TRUE OR TRUE XOR TRUE;", "b", True),
    ("b := FALSE AND FALSE XOR TRUE;", "b", True),
    ("b := NOT FALSE AND FALSE;", "b", False),
    ("b := TRUE & NOT FALSE;", "b", True),
    # Integers: division towards 0, the remainder has the sign of the dividend.
    ("i := -7; i := i / 2;", "i", -3),
    ("i := -7; i := i MOD 2;", "i", -1),
    ("i := 7; i := i MOD -2;", "i", 1),
    ("l := -9223372036854775808;", "l", -(1 << 63)),
    ("ul := 18446744073709551615;", "ul", (1 << 64) - 1),
    ("u := 16#FFFF;", "u", 65535),
    ("i := 1_000;", "i", 1000),
    ("di := DINT#-5;", "di", -5),
    # Bit strings.
    ("w := 2#1010_0101;", "w", 0xA5),
    ("w := 8#17;", "w", 15),
    ("w := NOT WORD#16#00FF;", "w", 0xFF00),
    ("w := WORD#16#F0F0 AND 16#FF00 OR 16#000F;", "w", 0xF00F),
    ("w := WORD#16#FF XOR 16#F;", "w", 0xF0),
    ("w := SHL(WORD#16#FF01, 8);", "w", 0x0100),
    ("w := SHR(WORD#16#FF01, 8);", "w", 0x00FF),
    ("w := ROL(WORD#16#1234, 8);", "w", 0x3412),
    ("lw := SHL(WORD_TO_LWORD(WORD#16#8000), 48);", "lw", 1 << 63),
    # Conversions.
    ("i := WORD_TO_INT(WORD#16#FFFE);", "i", -2),
    ("u := WORD_TO_UINT(WORD#16#FFFE);", "u", 65534),
    ("di := DWORD_TO_DINT(DWORD#16#8000_0000);", "di", -(1 << 31)),
    ("l := LWORD_TO_LINT(LWORD#16#FFFF_FFFF_FFFF_FFFF);", "l", -1),
    ("w := INT_TO_WORD(INT#-1);", "w", 65535),
    ("bt := DWORD_TO_BYTE(DWORD#16#12345678);", "bt", 0x78),
    ("di := INT_TO_DINT(INT#-5);", "di", -5),
    ("r := DINT_TO_REAL(DINT#16777217);", "r", 16777216.0),  # 24 bits
    ("lr := DINT_TO_LREAL(DINT#16777217);", "lr", 16777217.0),
    # Floating-point numbers.
    ("r := 0.1;", "r", 0.10000000149011612),
    ("lr := 0.1;", "lr", 0.1),
    ("r := 1.5E-3;", "r", 0.001500000013038516),
    ("r := 1.0; r := r / 3.0;", "r", 0.3333333432674408),
    ("r := 1.0E-38; r := r * 0.000_1;", "r", 1.0005271035279194e-42),  # denormal
    ("lr := REAL_TO_LREAL(REAL#0.5);", "lr", 0.5),
    ("r := -r - 1.0;", "r", -1.0),
    # Texts.
    ("s := 'a$'b$$c$41$0A';", "s", "a'b$cA\n"),
    ("s := CONCAT('ab', 'cd');", "s", "abcd"),
    ("s := MID('abcdef', 2, 3);", "s", "cd"),
    ("s := MID('abc', 0, 1);", "s", ""),
    ("i := FIND('abcabc', 'ca');", "i", 3),
    ("i := FIND('abc', 'd');", "i", 0),
    ("i := LEN('abc');", "i", 3),
    ("s := 'abc'; b := s = 'abc';", "b", True),
    ("s := 'abc'; b := s <> 'abd';", "b", True),
    # Comparisons.
    ("tm := T#1s500ms; b := tm > TIME#1m;", "b", False),
    ("b := WORD#5 = 5;", "b", True),
    ("b := 5 <> u;", "b", True),
    ("b := 2.5 >= r;", "b", True),
    # Structures and arrays are copied.
    ("line_1.begin.x := 2.0; line_2 := line_1; line_1.begin.x := 3.0; r := line_2.begin.x;", "r", 2.0),
    ("s := LINE_1.Finish.LABEL;", "s", "none"),
    ("words_1[13] := 7; w := words_1[13];", "w", 7),
    ("i := 1; grid_1[i, i + 1] := 8; i := grid_1[1, 2];", "i", 8),
    # Statements.
    ("IF b THEN i := 1; ELSIF NOT b THEN i := 2; ELSE i := 3; END_IF;", "i", 2),
    ("IF b THEN i := 1; ELSIF b THEN i := 2; ELSE i := 3; END_IF;", "i", 3),
    ("i := 4; CASE i OF 1: u := 1; 2, 4..6: u := 2; b := TRUE; ELSE u := 3; END_CASE;", "u", 2),
    ("i := 9; CASE i OF -1: u := 1; ELSE u := 3; END_CASE;", "u", 3),
    ("i := 9; CASE i OF 1: u := 1; END_CASE;", "u", 0),
    ("FOR i := 1 TO 4 DO u := u + 1; END_FOR;", "u", 4),
    ("FOR i := 4 TO 1 BY -1 DO u := u + 1; END_FOR;", "u", 4),
    ("FOR i := 4 TO 1 DO u := u + 1; END_FOR;", "u", 0),
    ("FOR i := 1 TO 9 DO IF i = 3 THEN CONTINUE; END_IF; IF i = 5 THEN EXIT; END_IF; u := u + 1; END_FOR;", "u", 3),
    ("WHILE i < 5 DO i := i + 2; END_WHILE;", "i", 6),
    ("i := 1; RETURN; i := 2;", "i", 1),
    ("(* a comment with 'quotes' *) i := 1; // to the end of the line", "i", 1),
    ("I := 3;", "i", 3),
)

# What is refused, and words of the sentence. Of each, the line of the statement is 1 within the body.
REFUSED = (
    # Words.
    ("i := 1", "; is expected"),
    ("i = 1;", ":= is expected"),
    ("x__1 := 1;", "underscores"),
    ("x_ := 1;", "underscores"),
    ("i := 1; (* without an end", "does not end"),
    ("i := 1; (* one (* in *) other *)", "comment in a comment"),
    ("s := 'abc;", "no word of the language"),
    ("s := \"abc\";", "no word of the language"),
    ("s := 'a\tb';", r"needs \$"),
    ("s := 'a$b';", "no word of the language"),
    ("i := 0x10;", "runs into a word"),
    ("r := 1.0e5;", "runs into a word"),
    ("r := 1.;", "a name|name is expected|; is expected"),
    ("r := .5;", "a value is expected"),
    ("w := 2#12;", "base 2"),
    ("w := 16#ff;", "; is expected|no word"),
    ("i := 1 @ 2;", "no word of the language"),
    ("i := i ** 2;", "a value is expected"),
    ("w := %IW0;", "no word of the language"),
    ("i := 5 % 2;", "no word of the language"),
    ("b := i == 1;", "a value is expected"),
    ("b := i != 1;", "no word of the language"),
    ("{pragma} i := 1;", "no word of the language"),
    ("REPEAT i := 1; UNTIL b END_REPEAT;", "name is expected"),
    ("if b then i := 1; end_if", "; is expected"),
    ("IF b THEN i := 1; ELSE IF c THEN i := 2; END_IF;", "not END_PROGRAM"),
    ("i := j_1;", "not declared"),
    ("type := 1;", "name is expected"),
    ("+b := TRUE;", "name is expected"),
    ("i := +i;", r"a \+ in front"),
    # Types: nothing is converted by itself.
    ("i := u;", "INT is expected, not UINT"),
    ("di := i;", "DINT is expected, not INT"),
    ("lr := r;", "LREAL is expected, not REAL"),
    ("r := i;", "REAL is expected, not INT"),
    ("r := 1;", "1 is no REAL"),
    ("i := 1.0;", "1.0 is no INT"),
    ("w := u;", "WORD is expected, not UINT"),
    ("w := INT#1;", "WORD is expected, not INT"),
    ("b := 1;", "1 is no BOOL"),
    ("b := w;", "BOOL is expected, not WORD"),
    ("i := TRUE;", "True is no|INT is expected, not BOOL"),
    ("i := 'a';", "INT is expected"),
    ("i := 32768;", "32768 is no INT"),
    ("u := -1;", "-1 is no UINT"),
    ("w := 16#1_0000;", "65536 is no WORD"),
    ("w := -1;", "-1 is no WORD"),
    ("us := USINT#256;", "256 is no USINT"),
    ("i := INT#1.5;", "1.5 is no INT"),
    ("r := REAL#1;", "1 is no REAL"),
    ("i := FOO#1;", "FOO is no type"),
    ("s := 'elf letters';", "does not fit"),
    ("b := i = u;", "INT = UINT"),
    ("b := 1 = 2;", "is open"),
    ("b := b < c;", "BOOL < BOOL"),
    ("b := w < dw;", "WORD < DWORD"),
    ("b := w < 5;", "WORD < WORD"),  # since the 3rd edition alone
    ("b := s < 'a';", "< "),
    ("b := line_1 = line_2;", "Line = Line"),
    ("w := w + 1;", r"WORD \+ WORD"),
    ("i := i AND 1;", "INT AND INT"),
    ("r := r MOD 2.0;", "REAL MOD REAL"),
    ("b := NOT i;", "NOT of INT"),
    ("u := -u;", "- of UINT"),
    ("tm := tm + T#1s;", r"TIME \+ TIME"),
    ("IF i THEN b := TRUE; END_IF;", "BOOL is expected, not INT"),
    ("WHILE w DO b := TRUE; END_WHILE;", "BOOL is expected, not WORD"),
    ("FOR r := 1.0 TO 2.0 DO b := TRUE; END_FOR;", "a FOR with a REAL"),
    ("FOR i := 1 TO u DO b := TRUE; END_FOR;", "INT is expected, not UINT"),
    ("FOR i := 1 TO 3 BY 0 DO b := TRUE; END_FOR;", "step"),
    ("FOR i := 1 TO 3 DO i := 2; END_FOR;", "controls the loop"),
    ("CASE w OF 1: b := TRUE; END_CASE;", "a CASE of WORD"),
    ("CASE i OF 1: b := TRUE; 0..3: c := TRUE; END_CASE;", "the label 0"),
    ("CASE i OF 3..1: b := TRUE; END_CASE;", "the label 3"),
    ("CASE i OF END_CASE;", "without a branch"),
    ("CASE i OF 1.5: b := TRUE; END_CASE;", "1.5 is no INT"),
    ("EXIT;", "outside of a loop"),
    ("CONTINUE;", "outside of a loop"),
    # Structures and arrays.
    ("line_1.middle := line_2.begin;", "shows no middle"),
    ("i := line_1;", "INT is expected, not Line"),
    ("w := words_1[9];", "index 9"),
    ("w := words_1[14];", "index 14"),
    ("w := words_1[w];", "index of type WORD"),
    ("w := words_1[0, 1];", "2 indices"),
    ("i := i[0];", "1 indices"),
    ("w := words_1;", "WORD is expected"),
    # Functions.
    ("w := SHL(5, 1);", "is open"),
    ("i := SHL(i, 1);", "SHL of INT"),
    ("w := SHL(w, r);", "SHL of WORD, REAL"),
    ("w := SHL(w);", "2 arguments"),
    ("w := SHL(IN := w, N := 1);", "by position"),
    ("i := LEN(i);", "LEN of INT"),
    ("i := WORD_TO_INT(dw);", "WORD_TO_INT of DWORD"),
    ("r := DWORD_TO_REAL(dw);", "which tools do differently"),
    ("di := WORD_TO_DINT(w);", "which tools do differently"),
    ("di := REAL_TO_DINT(r);", "which tools do differently"),
    ("b := WORD_TO_BOOL(w);", "which tools do differently"),
    ("i := INT_TO_INT(i);", "is no function"),
    ("i := TO_INT(w);", "is no function"),
    ("i := ABS(i);", "is no function"),
    ("i := Twice(i);", "no such argument"),
    ("i := Twice();", "without n"),
    ("i := Twice(n := u);", "INT is expected, not UINT"),
    ("i := Twice(n := 1, n := 2);", "or twice"),
    ("i := Twice(m := 1);", "no such argument"),
    ("Twice(n := 1);", "no function block"),
    # Function blocks.
    ("count(by_2 := 1);", "no such argument"),
    ("count(1);", "no such argument"),
    ("count(total => u);", "total is INT, not UINT"),
    ("count(total := i);", "no such argument"),
    ("count(total => 5);", "name is expected"),
    ("count.total := 1;", "from outside"),
    ("count.by_1 := 1;", "shows no by_1"),
    ("i := count.hidden;", "shows no hidden"),
    ("i := count;", "INT is expected"),
    ("count := other;", "is a function block"),
    ("i := Counter(by_1 := 1);", "is no function"),
    ("swap_1(p := w);", "without q"),
    ("swap_1(p := w, q := 5);", "needs a variable"),
    ("swap_1(p := w, q := K);", "a constant or an input"),
    ("swap_1(p := w, q := u);", "q is WORD, not UINT"),
    ("K := 5;", "a constant or an input"),
)

# Whole texts.
DECLARATIONS_REFUSED = (
    ("TYPE A_1 : STRUCT END_STRUCT; END_TYPE", "name is expected"),
    ("TYPE A_1 : STRUCT x : INT END_STRUCT; END_TYPE", "; is expected"),
    ("TYPE A_1 : STRUCT x : INT; END_STRUCT END_TYPE", "; is expected"),
    ("TYPE A_1 : STRUCT x : INT; X : INT; END_STRUCT; END_TYPE", "declared twice"),
    ("TYPE A_1 : STRUCT x : STRING; END_STRUCT; END_TYPE", "without a length"),
    ("TYPE A_1 : STRUCT x : STRING[255]; END_STRUCT; END_TYPE", "1 to 254"),
    ("TYPE A_1 : STRUCT x : Unknown; END_STRUCT; END_TYPE", "Unknown is no type"),
    ("TYPE A_1 : STRUCT x : A_1; END_STRUCT; END_TYPE", "A_1 is no type"),
    ("TYPE A_1 : STRUCT len : INT; END_STRUCT; END_TYPE", "a name of the standard"),
    ("TYPE A_1 : STRUCT int_to_real : INT; END_STRUCT; END_TYPE", "a name of the standard"),
    ("TYPE A_1 : STRUCT array : INT; END_STRUCT; END_TYPE", "name is expected"),
    ("TYPE A_1 : STRUCT " + 33 * "a" + " : INT; END_STRUCT; END_TYPE", "longer than 32"),
    ("TYPE A_1 : STRUCT 1a : INT; END_STRUCT; END_TYPE", "runs into a word"),
    ("TYPE A_1 : STRUCT x-y : INT; END_STRUCT; END_TYPE", ": is expected"),
    ("TYPE A_1 : STRUCT h\u00f6he : INT; END_STRUCT; END_TYPE", "only ASCII"),
    ("(* h\u00f6he *)", "only ASCII"),
    ("TYPE A_1 : ARRAY [1..0] OF INT; END_TYPE", "ends before it begins"),
    ("TYPE A_1 : ARRAY [0..1] OF INT; a_1 : ARRAY [0..1] OF INT; END_TYPE", "declared twice"),
    ("TYPE A_1 : INT; END_TYPE", "only a STRUCT and an ARRAY"),
    ("TYPE A_1 : ARRAY [*] OF INT; END_TYPE", "integer is expected"),
    ("VAR_GLOBAL x : INT; END_VAR", "is expected"),
    ("FUNCTION F_1 : INT END_FUNCTION", "never gets its result"),
    ("FUNCTION F_1 END_FUNCTION", ": is expected"),
    ("FUNCTION F_1 : INT F_1 := F_1(); END_FUNCTION", "F_1 is no function"),
    ("FUNCTION F_1 : INT VAR t_1 : TON; END_VAR F_1 := 1; END_FUNCTION", "keeps nothing"),
    ("FUNCTION F_1 : INT VAR_INPUT n : INT; END_VAR n := 1; F_1 := n; END_FUNCTION", "a constant or an input"),
    ("FUNCTION F_1 : INT VAR f_1 : INT; END_VAR F_1 := 1; END_FUNCTION", "declared twice"),
    ("FUNCTION SHL : INT SHL := 1; END_FUNCTION", "a name of the standard"),
    ("FUNCTION_BLOCK B_1 VAR x : INT; x : INT; END_VAR END_FUNCTION_BLOCK", "declared twice"),
    ("FUNCTION_BLOCK B_1 VAR CONSTANT x : INT; END_VAR END_FUNCTION_BLOCK", "has no value"),
    ("FUNCTION_BLOCK B_1 VAR_INPUT CONSTANT x : INT := 1; END_VAR END_FUNCTION_BLOCK", "name is expected"),
    ("FUNCTION_BLOCK B_1 VAR_INPUT t_1 : TON; END_VAR END_FUNCTION_BLOCK", "in VAR only"),
    ("FUNCTION_BLOCK B_1 VAR_IN_OUT x : INT := 1; END_VAR END_FUNCTION_BLOCK", "no initial value"),
    ("FUNCTION_BLOCK B_1 VAR x : INT := 1.5; END_VAR END_FUNCTION_BLOCK", "1.5 is no INT"),
    ("FUNCTION_BLOCK B_1 VAR x : ARRAY [0..2] OF INT := [1, 2]; END_VAR END_FUNCTION_BLOCK", "2 initial values"),
    ("FUNCTION_BLOCK B_1 VAR x : ARRAY [0..2] OF TON; END_VAR END_FUNCTION_BLOCK", "ARRAY of function blocks"),
    ("FUNCTION_BLOCK B_1 VAR x : STRING[2] := 'abc'; END_VAR END_FUNCTION_BLOCK", "does not fit"),
    ("FUNCTION_BLOCK B_1 END_FUNCTION", "name is expected"),
    ("PROGRAM Main VAR_INPUT x : INT; END_VAR END_PROGRAM", "VAR is expected"),
    ("PROGRAM Main VAR x : Later; END_VAR END_PROGRAM TYPE Later : STRUCT y : INT; END_STRUCT; END_TYPE", "Later is no type"),
    ("PROGRAM Main", "name is expected"),
    ("PROGRAM Main END_PROGRAM FUNCTION_BLOCK B_1 VAR x : Main; END_VAR END_FUNCTION_BLOCK", "Main is no type"),
)

FAULTS = (
    ("i := 32767; i := i + 1;", "32768 is no INT"),
    ("u := u - 1;", "-1 is no UINT"),
    ("si := -128; si := -si;", "128 is no SINT"),
    ("di := 100000; i := DINT_TO_INT(di);", "100000 is no INT"),
    ("i := 5 / i;", "division by 0"),
    ("i := 5 MOD i;", "division by 0"),
    ("r := 1.0 / r;", "division by 0"),
    ("r := 3.0E38; r := r * 2.0;", "REAL overflows"),
    ("lr := 1.0E300; r := LREAL_TO_REAL(lr);", "REAL overflows"),
    ("lr := 1.0E300; lr := lr * 1.0E300;", "LREAL overflows"),
    ("i := 14; w := words_1[i];", "index 14"),
    ("grid_1[i, i + 3] := 1;", "index 3"),
    ("long := '12345678901'; s := long;", "does not fit"),
    ("s := MID('abc', 2, 3);", "2 characters from 3"),
    ("s := MID('abc', 1, 0);", "1 characters from 0"),
    ("i := FIND('abc', '');", "a search for nothing"),
    ("i := -1; w := SHL(w, i);", "a shift by -1"),
    ("FOR i := 1 TO 3 DO b := TRUE; END_FOR; u := INT_TO_UINT(i);", "after its end"),
    ("WHILE TRUE DO b := TRUE; END_WHILE;", "without an end"),
    ("i := 20; b := i < 5 AND words_1[i] = 5;", "index 20"),  # the second operand is looked at as well
)


class Language(unittest.TestCase):
    before = TWICE + COUNTER + SWAP
    variables = "count, other : Counter; swap_1 : Swap; END_VAR VAR CONSTANT K : WORD := 3;\n"

    def test_computes(self):
        for body, name, value in VALUES:
            with self.subTest(body):
                self.assertEqual(run(body).get(name), value)

    def test_refuses(self):
        first_line = program("", self.before, self.variables).count("\n") - 1
        for body, words in REFUSED:
            with self.subTest(body), self.assertRaisesRegex(Refused, rf"^line \d+: .*({words})") as refused:
                compile_text(program(body, self.before, self.variables))
            line = int(str(refused.exception).split()[1].rstrip(":"))
            self.assertLessEqual(abs(line - first_line), 1, (body, str(refused.exception)))

    def test_refuses_declarations(self):
        for text, words in DECLARATIONS_REFUSED:
            with self.subTest(text), self.assertRaisesRegex(Refused, rf"^line \d+: .*{words}"):
                compile_text(text)

    def test_reports_faults(self):
        for body, words in FAULTS:
            with self.subTest(body), self.assertRaisesRegex(Fault, words):
                run(body)

    def test_a_real_literal_that_no_real_holds(self):
        with self.assertRaisesRegex(Fault, "REAL overflows"):
            compile_text(program("r := 1.0E39;"))

    def test_functions_begin_anew_and_blocks_keep_their_variables(self):
        fresh = function("Fresh", "VAR_INPUT n : INT; END_VAR VAR sum_1 : INT := 5; END_VAR", "sum_1 := sum_1 + n; Fresh := sum_1;")
        main = run("i := Fresh(n := 1) + Twice(n := 4); count(by_1 := 10, total => u_1); other();", self.before + fresh,
                   "count, other : Counter; u_1 : INT;", cycles=3)
        self.assertEqual([main.get(name) for name in ("i", "u_1", "count.total", "other.total")], [14, 30, 30, 3])

    def test_an_input_that_is_missing_keeps_its_value(self):
        main = run("IF NOT b THEN count(by_1 := 7); b := TRUE; ELSE count(); END_IF;", COUNTER, "count : Counter;", cycles=2)
        self.assertEqual(main.get("count.total"), 14)

    def test_variables_in_and_out(self):
        main = run("w := 1; words_1[11] := 2; swap_1(p := w, q := words_1[11]);", SWAP, "swap_1 : Swap;")
        self.assertEqual((main.get("w"), main.get("words_1")), (2, [0, 1, 0, 0]))

    def test_a_function_with_an_array_in_and_out(self):
        total = function("Sum", "VAR_IN_OUT a : Words; END_VAR VAR n : INT; t_1 : UINT; END_VAR",
                         "FOR n := 10 TO 13 DO t_1 := t_1 + WORD_TO_UINT(a[n]); END_FOR; Sum := t_1;", "UINT")
        main = run("words_1[10] := 3; words_1[13] := 4; u := Sum(a := words_1);", total)
        self.assertEqual(main.get("u"), 7)

    def test_arrays_of_two_names_are_two_types(self):
        other = "TYPE Others : ARRAY [10..13] OF WORD; END_TYPE\n"
        with self.assertRaisesRegex(Refused, "Others is expected, not Words"):
            compile_text(program("others_1 := words_1;", other, "others_1 : Others;"))

    def test_a_constant_array(self):
        main = run("r := steps[2];", variables="END_VAR VAR CONSTANT steps : ARRAY [0..2] OF REAL := [1.0, -2.0, 0.5];")
        self.assertEqual(main.get("r"), 0.5)

    def test_a_timer(self):
        machine = Machine(compile_text(program("t_1(IN := b, PT := T#1s, Q => c);", variables="t_1 : TON;")))
        main, seen = machine.program("Main"), []
        for on in (False, True, True, True, False, True):
            main.set("b", on)
            machine.cycle(main, 0.5)
            seen.append((main.get("c"), main.get("t_1.ET")))
        self.assertEqual(seen, [(False, 0.0), (False, 0.0), (False, 0.5), (True, 1.0), (False, 0.0), (False, 0.0)])

    def test_access_from_outside(self):
        main = run("words_1[12] := w;")
        main.set("words_1", [1, 2, 3, 4])
        main.set("line_1.begin.label", "here")
        self.assertEqual((main.get("words_1[12]"), main.get("line_1.begin.label")), (3, "here"))
        with self.assertRaises(ValueError):
            main.set("words_1", [1])
        with self.assertRaisesRegex(Fault, "65536 is no WORD"):
            main.set("words_1", [1, 2, 3, 65536])
        with self.assertRaisesRegex(Refused, "not declared"):
            main.get("nothing")
        with self.assertRaises(KeyError):
            Machine(compile_text(COUNTER)).program("Counter")

    def test_no_number_is_infinite(self):
        self.assertTrue(math.isfinite(run("r := 3.0E38;").get("r")))


if __name__ == "__main__":
    unittest.main()
