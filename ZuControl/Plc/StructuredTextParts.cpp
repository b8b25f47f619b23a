#include "ZuControl/Plc/StructuredTextParts.h"

#include "wApi/wTypes.h"

#include <array>
#include <cstdio>

namespace ZuControl::Plc::StructuredText
{

namespace
{

constexpr std::string_view DWORD_FUNCTION = R"(
(* 32 bits of two registers. *)
FUNCTION {prefix}_Dword : DWORD
VAR_INPUT
  high, low : WORD;
END_VAR
{prefix}_Dword := SHL(WORD_TO_DWORD(high), 16) OR WORD_TO_DWORD(low);
END_FUNCTION
)";

constexpr std::string_view LWORD_FUNCTION = R"(
(* 64 bits of four registers, the most significant first. *)
FUNCTION {prefix}_Lword : LWORD
VAR_INPUT
  first, second, third, fourth : WORD;
END_VAR
{prefix}_Lword := SHL(WORD_TO_LWORD(first), 48) OR SHL(WORD_TO_LWORD(second), 32)
  OR SHL(WORD_TO_LWORD(third), 16) OR WORD_TO_LWORD(fourth);
END_FUNCTION
)";

constexpr std::string_view REAL_FUNCTION = R"(
(* The number that these bits are, without rounding; 0.0 for bits that are no number. It calculates, because tools
   convert {bits} to {real} differently. *)
FUNCTION {prefix}_{name} : {real}
VAR_INPUT
  bits : {bits};
END_VAR
VAR
  exponent : {signed};
  mantissa : {unsigned};
  number : {real};
END_VAR
exponent := {bits}_TO_{signed}(SHR(bits, {mantissaBits}) AND {bits}#{exponentMask});
mantissa := {bits}_TO_{unsigned}(bits AND {bits}#{mantissaMask});
IF exponent = {noNumber} THEN
  {prefix}_{name} := 0.0;
  RETURN;
END_IF;
IF exponent = 0 THEN
  exponent := 1;
ELSE
  mantissa := mantissa + {hiddenBit};
END_IF;
exponent := exponent - {bias};
number := {unsigned}_TO_{real}(mantissa);
WHILE exponent >= 8 DO
  number := number * 256.0;
  exponent := exponent - 8;
END_WHILE;
WHILE exponent > 0 DO
  number := number * 2.0;
  exponent := exponent - 1;
END_WHILE;
WHILE exponent <= -8 DO
  number := number / 256.0;
  exponent := exponent + 8;
END_WHILE;
WHILE exponent < 0 DO
  number := number / 2.0;
  exponent := exponent + 1;
END_WHILE;
IF (bits AND {bits}#{sign}) <> {bits}#0 THEN
  number := -number;
END_IF;
{prefix}_{name} := number;
END_FUNCTION
)";

// The standard has no function from a code to a character that all tools have. MID and FIND in a table of all characters
// take its place. The table is in two parts, since a STRING has at most 254 characters in some tools.
constexpr std::string_view TEXT_FUNCTION = R"(
(* The text in count registers, up to the first 0. A register has one character in its low byte, or two. *)
FUNCTION {prefix}_Text : STRING[254]
VAR_INPUT
  first, count : DINT;
  hasTwo, isSwapped : BOOL; (* isSwapped: the low byte comes first *)
END_VAR
VAR_IN_OUT
  registers : {prefix}_Registers;
END_VAR
VAR
  i, characters, place : DINT;
  code : INT;
  isHigh : BOOL;
  text : STRING[254];
END_VAR
VAR CONSTANT
  lowTable : STRING[127] := '{low}';
  highTable : STRING[128] := '{high}';
END_VAR
text := '';
characters := count;
IF hasTwo THEN
  characters := count * 2;
END_IF;
FOR i := 0 TO characters - 1 DO
  place := first + i;
  isHigh := isSwapped;
  IF hasTwo THEN
    place := first + i / 2;
    isHigh := (i MOD 2 = 0) <> isSwapped;
  END_IF;
  IF isHigh THEN
    code := WORD_TO_INT(SHR(registers[place], 8));
  ELSE
    code := WORD_TO_INT(registers[place] AND WORD#16#00FF);
  END_IF;
  IF code = 0 THEN
    EXIT;
  END_IF;
  IF code < 128 THEN
    text := CONCAT(text, MID(lowTable, 1, code));
  ELSE
    text := CONCAT(text, MID(highTable, 1, code - 127));
  END_IF;
END_FOR;
{prefix}_Text := text;
END_FUNCTION
)";

constexpr std::string_view CODE_FUNCTION = R"(
(* The code of a character. *)
FUNCTION {prefix}_Code : WORD
VAR_INPUT
  character : STRING[1];
END_VAR
VAR
  code : INT;
END_VAR
VAR CONSTANT
  lowTable : STRING[127] := '{low}';
  highTable : STRING[128] := '{high}';
END_VAR
code := FIND(lowTable, character);
IF code = 0 THEN
  code := FIND(highTable, character);
  IF code > 0 THEN
    code := code + 127;
  END_IF;
END_IF;
{prefix}_Code := INT_TO_WORD(code);
END_FUNCTION
)";

/// The characters with these codes as the inside of a literal.
std::string Characters(uint32 first, uint32 last)
{
    std::string characters;
    for (uint32 code = first; code <= last; ++code)
    {
        std::array<char, 4> escaped{};
        std::snprintf(escaped.data(), escaped.size(), "$%02X", unsigned{code});
        bool const isPlain =
            (code >= '0' && code <= '9') || (code >= 'A' && code <= 'Z') || (code >= 'a' && code <= 'z');
        characters += isPlain ? std::string(1, static_cast<char>(code)) : escaped.data();
    }
    return characters;
}

std::string WithCharacters(std::string_view function, std::string const& prefix)
{
    return Filled(function, {{"prefix", prefix}, {"low", Characters(1, 127)}, {"high", Characters(128, 255)}});
}

} // namespace

std::string Filled(std::string_view text, std::map<std::string_view, std::string> const& values)
{
    std::string filled;
    std::size_t at = 0;
    for (std::size_t begin = text.find('{'); begin != std::string_view::npos; begin = text.find('{', at))
    {
        std::size_t const end = text.find('}', begin);
        filled += text.substr(at, begin - at);
        filled += values.at(text.substr(begin + 1, end - begin - 1));
        at = end + 1;
    }
    filled += text.substr(at);
    return filled;
}

std::string DwordFunction(std::string const& prefix)
{
    return Filled(DWORD_FUNCTION, {{"prefix", prefix}});
}

std::string LwordFunction(std::string const& prefix)
{
    return Filled(LWORD_FUNCTION, {{"prefix", prefix}});
}

std::string RealFunction(std::string const& prefix)
{
    return Filled(REAL_FUNCTION, {{"prefix", prefix},
                                  {"name", "RealOf"},
                                  {"real", "REAL"},
                                  {"bits", "DWORD"},
                                  {"signed", "DINT"},
                                  {"unsigned", "UDINT"},
                                  {"mantissaBits", "23"},
                                  {"exponentMask", "16#000000FF"},
                                  {"mantissaMask", "16#007FFFFF"},
                                  {"noNumber", "255"},
                                  {"hiddenBit", "8388608"},
                                  {"bias", "150"},
                                  {"sign", "16#80000000"}});
}

std::string LrealFunction(std::string const& prefix)
{
    return Filled(REAL_FUNCTION, {{"prefix", prefix},
                                  {"name", "LrealOf"},
                                  {"real", "LREAL"},
                                  {"bits", "LWORD"},
                                  {"signed", "LINT"},
                                  {"unsigned", "ULINT"},
                                  {"mantissaBits", "52"},
                                  {"exponentMask", "16#00000000000007FF"},
                                  {"mantissaMask", "16#000FFFFFFFFFFFFF"},
                                  {"noNumber", "2047"},
                                  {"hiddenBit", "4503599627370496"},
                                  {"bias", "1075"},
                                  {"sign", "16#8000000000000000"}});
}

std::string TextFunction(std::string const& prefix)
{
    return WithCharacters(TEXT_FUNCTION, prefix);
}

std::string CodeFunction(std::string const& prefix)
{
    return WithCharacters(CODE_FUNCTION, prefix);
}

std::string_view const COMMAND_BLOCK = R"(
(* Runs one command: a rising edge of execute starts it. busy is TRUE until done or error is; these stay until execute is
   FALSE again.
   The calling program writes words to the registers {first} to {last} in one request (function 16) while write is TRUE,
   and then sets isWritten, or isRefused if the write has failed, until write is FALSE. It goes on reading the registers
   and calling {prefix}_Decode. *)
FUNCTION_BLOCK {prefix}_Command
VAR_INPUT
  execute : BOOL;
  fits : BOOL;                  (* from {prefix}_Decode *)
  command : UINT;               (* {commandComment} *)
  text : STRING[{textLength}];             (* {textComment} *)
  firstId : UINT := 1000;       (* the request ids of this PLC; another PLC has others *)
  lastId : UINT := 1999;
  isWritten : BOOL;
  isRefused : BOOL;
  timeout : TIME := T#10s;
END_VAR
VAR_IN_OUT
  map : {prefix}_Map;
  words : {prefix}_Words;
END_VAR
VAR_OUTPUT
  write : BOOL;
  busy : BOOL;
  done : BOOL;
  error : BOOL;
  requestId : UINT;
  problem : STRING[80];         (* why error is TRUE *)
END_VAR
VAR
  state : INT;                  (* the labels of the CASE *)
  i : INT;
  place : DINT;
  clock : TON;
END_VAR
CASE state OF
0: (* idle *)
  IF execute THEN
    busy := TRUE;
    problem := '';
    state := 1;
    IF NOT fits THEN
      problem := 'The map of the device does not fit this program';
    ELSIF firstId >= lastId THEN
      problem := 'Two request ids at least are needed';
    END_IF;
  END_IF;
1: (* the write of the last command ends *)
  IF NOT isWritten AND NOT isRefused THEN
    (* The device runs a command only if its request id is another one than that of the last command. *)
    FOR i := 1 TO 2 DO
      IF requestId < firstId OR requestId >= lastId THEN
        requestId := firstId;
      ELSE
        requestId := requestId + 1;
      END_IF;
      IF requestId <> map.{answerId} THEN
        EXIT;
      END_IF;
    END_FOR;
    FOR place := {first} TO {last} DO
      words[place] := WORD#0;
    END_FOR;
    words[{requestRegister}] := {requestWord};
    words[{commandRegister}] := {commandWord};
    FOR i := 1 TO LEN(text) DO
      words[{textRegister} + INT_TO_DINT(i) - 1] := {textWord};
    END_FOR;
    write := TRUE;
    state := 2;
  END_IF;
2: (* the write runs *)
  IF isRefused THEN
    problem := 'The device has refused the write';
  ELSIF isWritten THEN
    write := FALSE;
    state := 3;
  END_IF;
3: (* the device carries out the command *)
  IF map.{answerId} = requestId THEN
    IF map.{answerStatus} = 2 THEN
      done := TRUE;
      busy := FALSE;
      state := 4;
    ELSIF map.{answerStatus} = 3 THEN
      problem := 'The device could not carry out the command';
    END_IF;
  END_IF;
ELSE (* 4: ended *)
  IF NOT execute THEN
    done := FALSE;
    error := FALSE;
    state := 0;
  END_IF;
END_CASE;
clock(IN := busy, PT := timeout);
IF busy AND NOT fits THEN
  problem := 'The map of the device does not fit this program';
ELSIF busy AND clock.Q THEN
  problem := 'The device has not answered in time';
END_IF;
IF busy AND problem <> '' THEN
  write := FALSE;
  busy := FALSE;
  error := TRUE;
  state := 4;
END_IF;
END_FUNCTION_BLOCK
)";

} // namespace ZuControl::Plc::StructuredText
