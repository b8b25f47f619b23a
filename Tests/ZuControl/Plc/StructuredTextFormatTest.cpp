#include "ZuControl/Plc/PlcFormats.h"

#include <gtest/gtest.h>

namespace ZuControl::Plc
{

using ControlProtocol::BlockOrder;
using ControlProtocol::FieldArea;
using ControlProtocol::FieldRole;
using ControlProtocol::FieldType;

namespace
{

PlcTag TagAt(uint32 address, std::string name, FieldType type, uint16 count)
{
    PlcTag tag;
    tag.name = std::move(name);
    tag.address = address;
    tag.assembly = "registers";
    tag.blockType = "Block";
    tag.field.type = type;
    tag.field.count = count;
    return tag;
}

PlcTagList ListOf(std::vector<PlcTag> tags)
{
    PlcTagList list;
    list.service = "Plc";
    list.fingerprint = 0x1234ABCD;
    list.fingerprintVersion = 1;
    list.assemblies = {"registers"};
    list.tags = std::move(tags);
    return list;
}

std::string Write(PlcTagList const& list)
{
    return FindPlcFormat("structured-text")->write(list);
}

std::string Write(PlcTag const& tag)
{
    return Write(ListOf({tag}));
}

/// The part from `begin` up to `end`, without both.
std::string Between(std::string const& text, std::string const& begin, std::string const& end)
{
    std::size_t const first = text.find(begin);
    if (first == std::string::npos)
    {
        return "no " + begin;
    }
    std::size_t const from = first + begin.size();
    return text.substr(from, text.find(end, from) - from);
}

/// The statements that decode the only tag.
std::string StatementsOf(PlcTag const& tag)
{
    return Between(Write(tag), "fits := TRUE;\n", "END_FUNCTION_BLOCK");
}

PlcTag InOrderOf(BlockOrder order, PlcTag tag)
{
    tag.order = order;
    return tag;
}

std::vector<PlcTag> CommandTags()
{
    std::vector<PlcTag> tags = {TagAt(10, "ControlInput_requestId", FieldType::UINT, 1),
                                TagAt(11, "ControlInput_commandId", FieldType::USINT, 1),
                                TagAt(12, "ControlInput_text", FieldType::TEXT, 8),
                                TagAt(20, "ControlOutput_requestId", FieldType::UINT, 1),
                                TagAt(21, "ControlOutput_status", FieldType::USINT, 1)};
    tags[0].field.role = FieldRole::COMMAND_REQUEST_ID;
    tags[1].field.role = FieldRole::COMMAND_ID;
    tags[2].field.role = FieldRole::COMMAND_TEXT;
    tags[3].field.role = FieldRole::ANSWER_REQUEST_ID;
    tags[4].field.role = FieldRole::ANSWER_STATUS;
    return tags;
}

} // namespace

TEST(StructuredTextFormat, DecodesTheRegistersIntoAStruct)
{
    PlcTag value = TagAt(170, "profile_zMax_value", FieldType::DINT, 2);
    value.source = "profile/zMax";
    value.field.divisor = 1000;
    value.field.unit = "mm";
    value.field.invalid = 0x80000000;
    value.field.comment = "measured value";
    PlcTag state = TagAt(168, "System_runState", FieldType::USINT, 1);
    state.field.comment = "0: ready, 1: running";

    EXPECT_EQ(Write(ListOf({state, value})),
              R"((* Service Plc: holding registers 168 to 171. Fingerprint 305441741 = 16#1234ABCD, version 1.
   IEC 61131-3, 3rd edition. The calling program reads the registers into a variable of the type
   Plc_Registers, whose index is the address, and calls Plc_Decode in each cycle. *)

TYPE
  Plc_Registers : ARRAY [168..171] OF WORD;
  Plc_DINT_Scaled : STRUCT
    value : REAL; (* 0 if it is not valid *)
    number : DINT; (* as in the registers, all digits *)
    valid : BOOL;
  END_STRUCT;
  Plc_Map : STRUCT
    System_runState : USINT; (* register 168, Block, 0: ready, 1: running *)
    profile_zMax_value : Plc_DINT_Scaled; (* register 170, profile/zMax, measured value [mm] *)
  END_STRUCT;
END_TYPE

(* 32 bits of two registers. *)
FUNCTION Plc_Dword : DWORD
VAR_INPUT
  high, low : WORD;
END_VAR
Plc_Dword := SHL(WORD_TO_DWORD(high), 16) OR WORD_TO_DWORD(low);
END_FUNCTION

(* Decodes the registers into the map. *)
FUNCTION_BLOCK Plc_Decode
VAR_IN_OUT
  registers : Plc_Registers;
  map : Plc_Map;
END_VAR
VAR_OUTPUT
  fits : BOOL;          (* TRUE: the map of the device is the one of this file *)
  problem : STRING[80]; (* why fits is FALSE, or that nothing was checked *)
END_VAR
VAR
  bits32 : DWORD;
END_VAR
(* The map has no block MapFingerprint, so that this file cannot find out whether the map has changed. *)
problem := 'Not checked: the map of the device has no block MapFingerprint';
fits := TRUE;
map.System_runState := BYTE_TO_USINT(WORD_TO_BYTE(registers[168]));
bits32 := Plc_Dword(high := registers[170], low := registers[171]);
map.profile_zMax_value.valid := bits32 <> DWORD#16#80000000;
map.profile_zMax_value.number := DWORD_TO_DINT(bits32);
IF map.profile_zMax_value.valid THEN
  map.profile_zMax_value.value := DINT_TO_REAL(map.profile_zMax_value.number) / 1000.0;
ELSE
  map.profile_zMax_value.value := 0.0;
END_IF;
END_FUNCTION_BLOCK
)");
}

TEST(StructuredTextFormat, TakesTheRegistersAndBytesInTheirOrder)
{
    PlcTag const number = TagAt(5, "a", FieldType::UDINT, 2);
    EXPECT_EQ(StatementsOf(InOrderOf(BlockOrder::ABCD, number)),
              "map.a := DWORD_TO_UDINT(Plc_Dword(high := registers[5], low := registers[6]));\n");
    EXPECT_EQ(StatementsOf(InOrderOf(BlockOrder::CDAB, number)),
              "map.a := DWORD_TO_UDINT(Plc_Dword(high := registers[6], low := registers[5]));\n");
    EXPECT_EQ(StatementsOf(InOrderOf(BlockOrder::BADC, number)),
              "map.a := DWORD_TO_UDINT(Plc_Dword(high := ROL(registers[5], 8), low := ROL(registers[6], 8)));\n");
    EXPECT_EQ(StatementsOf(InOrderOf(BlockOrder::DCBA, number)),
              "map.a := DWORD_TO_UDINT(Plc_Dword(high := ROL(registers[6], 8), low := ROL(registers[5], 8)));\n");
    EXPECT_EQ(StatementsOf(InOrderOf(BlockOrder::CDAB, TagAt(5, "a", FieldType::LINT, 4))),
              "map.a := LWORD_TO_LINT(Plc_Lword(first := registers[8], second := registers[7], third := registers[6], "
              "fourth := registers[5]));\n");
    EXPECT_EQ(StatementsOf(InOrderOf(BlockOrder::BADC, TagAt(5, "a", FieldType::INT, 1))),
              "map.a := WORD_TO_INT(ROL(registers[5], 8));\n");
}

TEST(StructuredTextFormat, FlagsAFloatingPointNumberThatIsNone)
{
    EXPECT_EQ(
        StatementsOf(TagAt(5, "a", FieldType::REAL, 2)),
        "bits32 := Plc_Dword(high := registers[5], low := registers[6]);\n"
        "map.a.valid := (SHR(bits32, 23) AND DWORD#16#000000FF) <> DWORD#16#000000FF;\n"
        "IF map.a.valid THEN\n  map.a.value := Plc_RealOf(bits := bits32);\nELSE\n  map.a.value := 0.0;\nEND_IF;\n");
    PlcTag scaled = TagAt(5, "a", FieldType::LREAL, 4);
    scaled.field.divisor = 10;
    std::string const statements = StatementsOf(scaled);
    EXPECT_NE(
        statements.find("map.a.valid := (SHR(bits64, 52) AND LWORD#16#00000000000007FF) <> LWORD#16#00000000000007FF;"),
        std::string::npos);
    EXPECT_NE(statements.find("map.a.value := Plc_LrealOf(bits := bits64) / 10.0;"), std::string::npos);
}

TEST(StructuredTextFormat, FlagsAMarkedNumberOfEachSize)
{
    auto const flag = [](FieldType type, uint16 count, uint64 mark) {
        PlcTag tag = TagAt(5, "a", type, count);
        tag.field.invalid = mark;
        return Between(StatementsOf(tag), "valid := ", ";");
    };
    EXPECT_EQ(flag(FieldType::USINT, 1, 2), "bits8 <> BYTE#16#02");
    EXPECT_EQ(flag(FieldType::INT, 1, 0x8000), "bits16 <> WORD#16#8000");
    EXPECT_EQ(flag(FieldType::ULINT, 4, 0xFFFFFFFFFFFFFFFF), "bits64 <> LWORD#16#FFFFFFFFFFFFFFFF");
}

TEST(StructuredTextFormat, HasBitsTextsAndRegistersOfUnknownContent)
{
    PlcTag bit = TagAt(5, "a", FieldType::BIT, 1);
    bit.field.bit = 9;
    EXPECT_EQ(StatementsOf(bit), "map.a := (registers[5] AND WORD#16#0200) <> WORD#0;\n");
    EXPECT_NE(Write(bit).find("a : BOOL; (* register 5 bit 9, Block *)"), std::string::npos);

    PlcTag text = TagAt(5, "a", FieldType::TEXT, 200);
    text.field.charactersPerRegister = 2;
    text.order = BlockOrder::BADC;
    EXPECT_EQ(StatementsOf(text),
              "map.a := Plc_Text(first := 5, count := 127, hasTwo := TRUE, isSwapped := TRUE, registers := "
              "registers);\n");
    EXPECT_NE(Write(text).find("a : STRING[254];"), std::string::npos);

    std::string const raw = "FOR i := 0 TO 2 DO\n  map.a[i] := registers[5 + i];\nEND_FOR;\n";
    EXPECT_EQ(StatementsOf(TagAt(5, "a", FieldType::RAW, 3)), raw);
    EXPECT_EQ(StatementsOf(TagAt(5, "a", FieldType::DINT, 3)), raw) << "a number in too many registers";
    PlcTag twisted = TagAt(5, "a", FieldType::TEXT, 3);
    twisted.field.charactersPerRegister = 3;
    EXPECT_EQ(StatementsOf(twisted), raw);
}

TEST(StructuredTextFormat, ComparesTheFingerprintBeforeItDecodes)
{
    PlcTag fingerprint = TagAt(5, "MapFingerprint_fingerprint", FieldType::UDINT, 2);
    fingerprint.field.role = FieldRole::FINGERPRINT;
    std::string const text = Write(fingerprint);
    EXPECT_EQ(Between(text, "END_VAR\nbits32", "map.Map"), R"( := Plc_Dword(high := registers[5], low := registers[6]);
IF bits32 <> DWORD#16#1234ABCD THEN
  map := blank;
  fits := FALSE;
  problem := 'The map of the device has changed: generate this file again';
  IF bits32 = DWORD#0 THEN
    problem := 'No fingerprint: the registers have not been read';
  END_IF;
  RETURN;
END_IF;
problem := '';
fits := TRUE;
)");
}

TEST(StructuredTextFormat, HasAFunctionBlockForCommands)
{
    std::string const text = Write(ListOf(CommandTags()));
    EXPECT_NE(text.find("  Plc_Words : ARRAY [10..19] OF WORD;\n"), std::string::npos);
    EXPECT_NE(text.find("  text : STRING[7]; "), std::string::npos);
    EXPECT_NE(text.find("    words[10] := UINT_TO_WORD(requestId);\n"
                        "    words[11] := UINT_TO_WORD(command);\n"
                        "    FOR i := 1 TO LEN(text) DO\n"
                        "      words[12 + INT_TO_DINT(i) - 1] := Plc_Code(character := MID(text, 1, i));\n"),
              std::string::npos);
    EXPECT_NE(text.find("IF map.ControlOutput_requestId = requestId THEN\n    IF map.ControlOutput_status = 2 THEN"),
              std::string::npos);
}

TEST(StructuredTextFormat, HasNoCommandsWithoutAllTheirRegisters)
{
    for (std::size_t missing = 0; missing < CommandTags().size(); ++missing)
    {
        std::vector<PlcTag> tags = CommandTags();
        tags.erase(tags.begin() + static_cast<std::ptrdiff_t>(missing));
        EXPECT_EQ(Write(ListOf(tags)).find("_Command"), std::string::npos) << missing;
    }
    std::vector<PlcTag> tags = CommandTags();
    tags[2].field.charactersPerRegister = 2;
    EXPECT_EQ(Write(ListOf(tags)).find("_Command"), std::string::npos);
    tags = CommandTags();
    tags[3].field.invalid = 0;
    EXPECT_EQ(Write(ListOf(tags)).find("_Command"), std::string::npos) << "the request id is a STRUCT";
    tags = CommandTags();
    tags[4].field.type = FieldType::INT;
    EXPECT_EQ(Write(ListOf(tags)).find("_Command"), std::string::npos);
}

TEST(StructuredTextFormat, KeepsHostileNamesWithinTheirComments)
{
    auto const comment = [](std::string source) {
        PlcTag tag = TagAt(5, "a", FieldType::UINT, 1);
        tag.source = std::move(source);
        return Between(Write(tag), "(* register 5, ", " *)\n");
    };
    EXPECT_EQ(comment("x*) evil := 1; (*"), "x* ) evil := 1; ( *");
    EXPECT_EQ(comment("(*)"), "( * )");
    EXPECT_EQ(comment("a\r\nb\t{c}'$"), "a??b?{c}'$");
    EXPECT_EQ(comment("H\xC3\xB6he \xE2\x82\xAC"), "H?he ?");
    EXPECT_EQ(comment("*"), "*");
}

TEST(StructuredTextFormat, NamesEachAssemblyOfAService)
{
    PlcTagList list = ListOf({TagAt(5, "a", FieldType::UINT, 1), TagAt(5, "b", FieldType::UINT, 1)});
    list.tags[1].assembly = "left/second camera";
    list.assemblies = {"registers", "left/second camera", "empty"};
    std::string const text = Write(list);
    EXPECT_NE(text.find("FUNCTION_BLOCK Plc_registers_Decode"), std::string::npos);
    EXPECT_NE(text.find("FUNCTION_BLOCK Plc_left_s_d8c5fa38_Decode"), std::string::npos);
}

TEST(StructuredTextFormat, HasNoCoilsAndSaysSoIfNothingIsLeft)
{
    PlcTag coil = TagAt(5, "a", FieldType::BOOL, 1);
    coil.field.area = FieldArea::COILS;
    EXPECT_EQ(Write(coil), "(* Service Plc: the map has no registers. *)\n");
    std::string const text = Write(ListOf({TagAt(5, "b", FieldType::UINT, 1), coil}));
    EXPECT_NE(text.find("\n(* Coils and discrete inputs show nothing that the registers do not show"),
              std::string::npos);
    EXPECT_EQ(text.find("map.a"), std::string::npos);
}

TEST(StructuredTextFormat, HasAFunctionBlockForAQueueThatHasAllItsNumbers)
{
    PlcTag acknowledge = TagAt(300, "q_acknowledged", FieldType::UINT, 1);
    acknowledge.field.role = FieldRole::QUEUE_ACKNOWLEDGE;
    acknowledge.order = BlockOrder::BADC;
    PlcTag held = TagAt(301, "q_number", FieldType::UINT, 1);
    held.field.role = FieldRole::QUEUE_NUMBER;
    PlcTag session = TagAt(304, "q_session", FieldType::UINT, 1);
    session.field.role = FieldRole::QUEUE_SESSION;
    PlcTag lost = TagAt(307, "q_lostBefore", FieldType::UINT, 1);
    lost.field.role = FieldRole::QUEUE_LOST_BEFORE;

    std::string const text = Write(ListOf({acknowledge, held, session, lost}));
    EXPECT_NE(text.find("FUNCTION_BLOCK Plc_Queue\n"), std::string::npos);
    EXPECT_NE(text.find("(* The queue at register 300: take(fits := decode.fits, held := map.q_number, session := "
                        "map.q_session,\n   lostBefore := map.q_lostBefore, isSwapped := TRUE, "),
              std::string::npos);
    EXPECT_EQ(Write(ListOf({acknowledge, held, session})).find("Plc_Queue"), std::string::npos);
    held.field.type = FieldType::UDINT;
    held.field.count = 2;
    EXPECT_EQ(Write(ListOf({acknowledge, held, session, lost})).find("Plc_Queue"), std::string::npos);
}

TEST(StructuredTextFormat, IsForRegistersOfTwoBytes)
{
    PlcFormat const& format = *FindPlcFormat("structured-text");
    EXPECT_TRUE(format.needsWords);
    EXPECT_STREQ(format.fileEnding, "st");
    EXPECT_STREQ(format.contentType, "text/plain; charset=us-ascii");
}

} // namespace ZuControl::Plc
