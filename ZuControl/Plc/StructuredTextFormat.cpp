#include "ZuControl/Plc/PlcNames.h"
#include "ZuControl/Plc/PlcWords.h"
#include "ZuControl/Plc/PlcWriters.h"
#include "ZuControl/Plc/StructuredTextParts.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <set>
#include <string_view>
#include <vector>

namespace ZuControl::Plc
{

using ControlProtocol::BlockOrder;
using ControlProtocol::FieldArea;
using ControlProtocol::FieldRole;
using ControlProtocol::FieldType;

namespace
{

constexpr std::size_t MOST_PREFIX_CHARACTERS = 19; // "_UDINT_Scaled" follows
constexpr uint32 MOST_TEXT_CHARACTERS = 254;       // of a STRING in some tools

/// A number in registers.
struct NumberType
{
    FieldType type;
    char const* name;
    uint32 registers;
    char const* bits;     ///< the bit string of the same size
    char const* variable; ///< of the function block, for these bits
};

constexpr NumberType NUMBER_TYPES[] = {
    {FieldType::USINT, "USINT", 1, "BYTE", "bits8"},   {FieldType::INT, "INT", 1, "WORD", "bits16"},
    {FieldType::UINT, "UINT", 1, "WORD", "bits16"},    {FieldType::DINT, "DINT", 2, "DWORD", "bits32"},
    {FieldType::UDINT, "UDINT", 2, "DWORD", "bits32"}, {FieldType::REAL, "REAL", 2, "DWORD", "bits32"},
    {FieldType::LINT, "LINT", 4, "LWORD", "bits64"},   {FieldType::ULINT, "ULINT", 4, "LWORD", "bits64"},
    {FieldType::LREAL, "LREAL", 4, "LWORD", "bits64"},
};

/// Null unless the tag is a number that takes the registers of its type.
NumberType const* NumberTypeOf(PlcTag const& tag)
{
    auto const* const found = std::ranges::find(NUMBER_TYPES, tag.field.type, &NumberType::type);
    return found != std::end(NUMBER_TYPES) && found->registers == tag.field.count ? found : nullptr;
}

bool IsReal(NumberType const& type)
{
    return type.type == FieldType::REAL || type.type == FieldType::LREAL;
}

bool IsScaled(PlcTag const& tag)
{
    return tag.field.divisor > 1 && tag.field.type != FieldType::REAL && tag.field.type != FieldType::LREAL;
}

bool IsBit(PlcTag const& tag)
{
    return tag.field.type == FieldType::BIT && tag.field.count == 1 && tag.field.bit < 16;
}

bool IsText(PlcTag const& tag)
{
    return tag.field.type == FieldType::TEXT &&
           (tag.field.charactersPerRegister == 1 || tag.field.charactersPerRegister == 2);
}

/// A tag of another type, or with a description that contradicts itself, is an array of registers.
bool IsRaw(PlcTag const& tag)
{
    return NumberTypeOf(tag) == nullptr && !IsBit(tag) && !IsText(tag);
}

/// Whether a tag is a STRUCT with a flag: it may be invalid, or shows the number and the value.
bool IsStruct(PlcTag const& tag, NumberType const& type)
{
    return tag.field.invalid.has_value() || IsScaled(tag) || IsReal(type);
}

std::string Hex(uint64 number, uint32 digits)
{
    std::array<char, 24> text{};
    std::snprintf(text.data(), text.size(), "16#%0*llX", static_cast<int>(digits),
                  static_cast<unsigned long long>(number));
    return text.data();
}

/// A text within a comment: printable ASCII, and neither the end nor the begin of a comment.
std::string InComment(std::string_view text)
{
    std::string safe;
    for (char const c : text)
    {
        bool const isByteOfCharacter = (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
        if (isByteOfCharacter)
        {
            continue; // '?' stands for the whole character
        }
        bool const joins = !safe.empty() && ((safe.back() == '*' && c == ')') || (safe.back() == '(' && c == '*'));
        safe += joins ? " " : "";
        safe += c >= ' ' && c <= '~' ? c : '?';
    }
    return safe;
}

/// A register with its high byte first.
std::string InOrder(std::string const& word, BlockOrder order)
{
    return order.areBytesSwapped ? "ROL(" + word + ", 8)" : word;
}

/// One assembly of a service.
class AssemblyWriter final
{
public:
    AssemblyWriter(PlcTagList const& usedList, std::string usedPrefix, std::vector<PlcTag const*> usedTags)
        : list(usedList), prefix(std::move(usedPrefix)), tags(std::move(usedTags))
    {
        for (PlcTag const* const tag : tags)
        {
            first = std::min(first, tag->address);
            last = std::max(last, tag->address + tag->field.count - 1);
        }
    }

    std::string Write()
    {
        WriteHead();
        WriteTypes();
        WriteFunctions();
        WriteDecode();
        WriteCommand();
        text += StructuredText::QueueBlock(prefix, tags);
        return text;
    }

private:
    void WriteHead()
    {
        text += "(* Service " + InComment(list.service) + ": holding registers " + std::to_string(first) + " to " +
                std::to_string(last) + ". Fingerprint " + std::to_string(list.fingerprint) + " = " +
                Hex(list.fingerprint, 8) + ", version " + std::to_string(list.fingerprintVersion) + ".\n";
        text +=
            "   IEC 61131-3, 3rd edition. The calling program reads the registers into a variable of the type\n   " +
            prefix + "_Registers, whose index is the address, and calls " + prefix + "_Decode in each cycle. *)\n";
    }

    // Types.

    std::string StructName(PlcTag const& tag, NumberType const& type) const
    {
        return prefix + "_" + type.name + (IsScaled(tag) ? "_Scaled" : "");
    }

    std::string TypeOf(PlcTag const& tag) const
    {
        if (NumberType const* const number = NumberTypeOf(tag); number != nullptr)
        {
            return IsStruct(tag, *number) ? StructName(tag, *number) : number->name;
        }
        if (IsBit(tag))
        {
            return "BOOL";
        }
        return IsText(tag) ? "STRING[" + std::to_string(TextLength(tag)) + "]"
                           : "ARRAY [0.." + std::to_string(tag.field.count - 1) + "] OF WORD";
    }

    static uint32 TextLength(PlcTag const& tag)
    {
        return std::min(uint32{tag.field.count} * tag.field.charactersPerRegister, MOST_TEXT_CHARACTERS);
    }

    void WriteTypes()
    {
        text += "\nTYPE\n  " + prefix + "_Registers : ARRAY [" + std::to_string(first) + ".." + std::to_string(last) +
                "] OF WORD;\n";
        std::set<std::string> written;
        for (PlcTag const* const tag : tags)
        {
            NumberType const* const number = NumberTypeOf(*tag);
            if (number != nullptr && IsStruct(*tag, *number) && written.insert(StructName(*tag, *number)).second)
            {
                WriteStruct(*tag, *number);
            }
        }
        text += "  " + prefix + "_Map : STRUCT\n";
        for (PlcTag const* const tag : tags)
        {
            text += "    " + tag->name + " : " + TypeOf(*tag) + "; (* " + Describe(*tag) + " *)\n";
        }
        text += "  END_STRUCT;\nEND_TYPE\n";
    }

    void WriteStruct(PlcTag const& tag, NumberType const& type)
    {
        text += "  " + StructName(tag, type) + " : STRUCT\n";
        text += std::string("    value : ") + (IsScaled(tag) ? "REAL" : type.name) + "; (* 0 if it is not valid *)\n";
        if (IsScaled(tag))
        {
            text += std::string("    number : ") + type.name + "; (* as in the registers, all digits *)\n";
        }
        text += "    valid : BOOL;\n  END_STRUCT;\n";
    }

    static std::string Describe(PlcTag const& tag)
    {
        std::string described = "register " + std::to_string(tag.address);
        if (IsBit(tag))
        {
            described += " bit " + std::to_string(tag.field.bit);
        }
        for (std::string const& part : {tag.source.empty() ? tag.blockType : tag.source, tag.field.comment})
        {
            described += part.empty() ? "" : ", " + InComment(part);
        }
        return described + (tag.field.unit.empty() ? "" : " [" + InComment(tag.field.unit) + "]");
    }

    // Functions.

    bool HasNumberOf(uint32 registers) const
    {
        return std::ranges::any_of(tags, [registers](PlcTag const* tag) {
            NumberType const* const number = NumberTypeOf(*tag);
            return number != nullptr && number->registers == registers;
        });
    }

    bool HasNumber(FieldType type) const
    {
        return std::ranges::any_of(tags, [type](PlcTag const* tag) {
            NumberType const* const number = NumberTypeOf(*tag);
            return number != nullptr && number->type == type;
        });
    }

    void WriteFunctions()
    {
        text += HasNumberOf(2) ? StructuredText::DwordFunction(prefix) : "";
        text += HasNumberOf(4) ? StructuredText::LwordFunction(prefix) : "";
        text += HasNumber(FieldType::REAL) ? StructuredText::RealFunction(prefix) : "";
        text += HasNumber(FieldType::LREAL) ? StructuredText::LrealFunction(prefix) : "";
        bool const hasText = std::ranges::any_of(tags, [](PlcTag const* tag) { return IsText(*tag); });
        text += hasText ? StructuredText::TextFunction(prefix) : "";
    }

    // The function block that decodes.

    /// The first tag with this role, if it is a plain value of one of these types; else null.
    PlcTag const* Find(FieldRole role, std::initializer_list<FieldType> types) const
    {
        auto const found = std::ranges::find_if(tags, [role](PlcTag const* tag) { return tag->field.role == role; });
        if (found == tags.end() || std::ranges::find(types, (*found)->field.type) == types.end() || IsRaw(**found))
        {
            return nullptr;
        }
        NumberType const* const number = NumberTypeOf(**found);
        return number == nullptr || !IsStruct(**found, *number) ? *found : nullptr;
    }

    void WriteDecode()
    {
        PlcTag const* const fingerprint = Find(FieldRole::FINGERPRINT, {FieldType::UDINT});
        text += "\n(* Decodes the registers into the map. *)\nFUNCTION_BLOCK " + prefix +
                "_Decode\nVAR_IN_OUT\n  registers : " + prefix + "_Registers;\n  map : " + prefix +
                "_Map;\nEND_VAR\nVAR_OUTPUT\n"
                "  fits : BOOL;          (* TRUE: the map of the device is the one of this file *)\n"
                "  problem : STRING[80]; (* why fits is FALSE, or that nothing was checked *)\nEND_VAR\n";
        WriteDecodeVariables(fingerprint);
        if (fingerprint != nullptr)
        {
            WriteCheck(*fingerprint);
        }
        else
        {
            text += "(* The map has no block MapFingerprint, so that this file cannot find out whether the map has "
                    "changed. "
                    "*)\nproblem := 'Not checked: the map of the device has no block MapFingerprint';\n";
        }
        text += "fits := TRUE;\n";
        std::ranges::for_each(tags, [this](PlcTag const* tag) { WriteTag(*tag); });
        text += "END_FUNCTION_BLOCK\n";
    }

    void WriteDecodeVariables(PlcTag const* fingerprint)
    {
        std::string variables;
        std::set<std::string_view> written;
        for (PlcTag const* const tag : tags)
        {
            NumberType const* const number = NumberTypeOf(*tag);
            bool const isUsed = number != nullptr && (IsStruct(*tag, *number) || tag == fingerprint);
            if (isUsed && written.insert(number->variable).second)
            {
                variables += std::string("  ") + number->variable + " : " + number->bits + ";\n";
            }
        }
        variables += std::ranges::any_of(tags, [](PlcTag const* tag) { return IsRaw(*tag); }) ? "  i : DINT;\n" : "";
        variables += fingerprint != nullptr ? "  blank : " + prefix + "_Map; (* nothing is valid *)\n" : "";
        text += variables.empty() ? "" : "VAR\n" + variables + "END_VAR\n";
    }

    void WriteCheck(PlcTag const& fingerprint)
    {
        NumberType const& type = *NumberTypeOf(fingerprint);
        text += std::string(type.variable) + " := " + Bits(fingerprint, type) + ";\nIF " + type.variable +
                " <> DWORD#" + Hex(list.fingerprint, 8) +
                " THEN\n  map := blank;\n  fits := FALSE;\n"
                "  problem := 'The map of the device has changed: generate this file again';\n  IF " +
                type.variable +
                " = DWORD#0 THEN\n    problem := 'No fingerprint: the registers have not been read';\n  END_IF;\n"
                "  RETURN;\nEND_IF;\nproblem := '';\n";
    }

    /// Register `place` of a tag, 0 being the most significant.
    static std::string Word(PlcTag const& tag, uint32 place)
    {
        uint32 const offset = tag.order.isBigEndian ? place : tag.field.count - 1 - place;
        return InOrder("registers[" + std::to_string(tag.address + offset) + "]", tag.order);
    }

    std::string Bits(PlcTag const& tag, NumberType const& type) const
    {
        switch (type.registers)
        {
        case 1:
            return type.type == FieldType::USINT ? "WORD_TO_BYTE(" + Word(tag, 0) + ")" : Word(tag, 0);
        case 2:
            return prefix + "_Dword(high := " + Word(tag, 0) + ", low := " + Word(tag, 1) + ")";
        default:
            return prefix + "_Lword(first := " + Word(tag, 0) + ", second := " + Word(tag, 1) +
                   ", third := " + Word(tag, 2) + ", fourth := " + Word(tag, 3) + ")";
        }
    }

    std::string Number(NumberType const& type, std::string const& bits) const
    {
        if (IsReal(type))
        {
            return prefix + (type.type == FieldType::REAL ? "_RealOf(bits := " : "_LrealOf(bits := ") + bits + ")";
        }
        return std::string(type.bits) + "_TO_" + type.name + "(" + bits + ")";
    }

    void WriteTag(PlcTag const& tag)
    {
        std::string const member = "map." + tag.name;
        if (NumberType const* const number = NumberTypeOf(tag); number != nullptr)
        {
            if (IsStruct(tag, *number))
            {
                WriteStructTag(tag, *number, member);
                return;
            }
            text += member + " := " + Number(*number, Bits(tag, *number)) + ";\n";
        }
        else if (IsBit(tag))
        {
            text +=
                member + " := (" + Word(tag, 0) + " AND WORD#" + Hex(uint64{1} << tag.field.bit, 4) + ") <> WORD#0;\n";
        }
        else if (IsText(tag))
        {
            text += member + " := " + prefix + "_Text(first := " + std::to_string(tag.address) +
                    ", count := " + std::to_string(TextLength(tag) / tag.field.charactersPerRegister) +
                    ", hasTwo := " + (tag.field.charactersPerRegister == 2 ? "TRUE" : "FALSE") +
                    ", isSwapped := " + (tag.order.areBytesSwapped ? "TRUE" : "FALSE") + ", registers := registers);\n";
        }
        else
        {
            text += "FOR i := 0 TO " + std::to_string(tag.field.count - 1) + " DO\n  " + member + "[i] := registers[" +
                    std::to_string(tag.address) + " + i];\nEND_FOR;\n";
        }
    }

    static std::string IsValid(PlcTag const& tag, NumberType const& type)
    {
        if (type.type == FieldType::REAL)
        {
            return "(SHR(bits32, 23) AND DWORD#16#000000FF) <> DWORD#16#000000FF";
        }
        if (type.type == FieldType::LREAL)
        {
            return "(SHR(bits64, 52) AND LWORD#16#00000000000007FF) <> LWORD#16#00000000000007FF";
        }
        return tag.field.invalid.has_value()
                   ? std::string(type.variable) + " <> " + type.bits + "#" + Hex(*tag.field.invalid, DigitsOf(type))
                   : "TRUE";
    }

    static uint32 DigitsOf(NumberType const& type)
    {
        return type.type == FieldType::USINT ? 2 : 4 * type.registers;
    }

    void WriteStructTag(PlcTag const& tag, NumberType const& type, std::string const& member)
    {
        std::string value = Number(type, type.variable);
        if (IsReal(type) && tag.field.divisor > 1)
        {
            value += " / " + std::to_string(tag.field.divisor) + ".0";
        }
        text += std::string(type.variable) + " := " + Bits(tag, type) + ";\n";
        text += member + ".valid := " + IsValid(tag, type) + ";\n";
        if (IsScaled(tag))
        {
            text += member + ".number := " + value + ";\n";
            value = std::string(type.name) + "_TO_REAL(" + member + ".number) / " + std::to_string(tag.field.divisor) +
                    ".0";
        }
        text += "IF " + member + ".valid THEN\n  " + member + ".value := " + value + ";\nELSE\n  " + member +
                ".value := " + (IsScaled(tag) || IsReal(type) ? "0.0" : "0") + ";\nEND_IF;\n";
    }

    // The function block of commands.

    void WriteCommand()
    {
        PlcTag const* const request = Find(FieldRole::COMMAND_REQUEST_ID, {FieldType::UINT});
        PlcTag const* const command = Find(FieldRole::COMMAND_ID, {FieldType::UINT, FieldType::USINT});
        PlcTag const* const name = Find(FieldRole::COMMAND_TEXT, {FieldType::TEXT});
        PlcTag const* const answerId = Find(FieldRole::ANSWER_REQUEST_ID, {FieldType::UINT});
        PlcTag const* const answerStatus = Find(FieldRole::ANSWER_STATUS, {FieldType::UINT, FieldType::USINT});
        bool const isComplete = request != nullptr && command != nullptr && name != nullptr && answerId != nullptr &&
                                answerStatus != nullptr && name->field.charactersPerRegister == 1;
        if (!isComplete)
        {
            return;
        }
        auto const [begin, end] = std::minmax({request->address, command->address, name->address});
        uint32 const final = std::max(end, name->address + name->field.count - 1);
        text += "\nTYPE\n  " + prefix + "_Words : ARRAY [" + std::to_string(begin) + ".." + std::to_string(final) +
                "] OF WORD;\nEND_TYPE\n" + StructuredText::CodeFunction(prefix);
        std::string const code = prefix + "_Code(character := MID(text, 1, i))";
        text += StructuredText::Filled(
            StructuredText::COMMAND_BLOCK,
            {{"prefix", prefix},
             {"commandComment", InComment(command->field.comment)},
             {"textComment", InComment(name->field.comment)},
             {"textLength", std::to_string(std::min<uint32>(name->field.count - 1, MOST_TEXT_CHARACTERS))},
             {"first", std::to_string(begin)},
             {"last", std::to_string(final)},
             {"requestRegister", std::to_string(request->address)},
             {"commandRegister", std::to_string(command->address)},
             {"textRegister", std::to_string(name->address)},
             {"requestWord", InOrder("UINT_TO_WORD(requestId)", request->order)},
             {"commandWord", InOrder("UINT_TO_WORD(command)", command->order)},
             {"textWord", InOrder(code, name->order)},
             {"answerId", answerId->name},
             {"answerStatus", answerStatus->name}});
    }

    PlcTagList const& list;
    std::string const prefix;
    std::vector<PlcTag const*> const tags;
    uint32 first = 65535;
    uint32 last = 0;
    std::string text;
};

} // namespace

std::string WriteStructuredText(PlcTagList const& list)
{
    std::map<std::string, std::vector<PlcTag const*>> assemblies;
    for (PlcTag const& tag : list.tags)
    {
        if (tag.field.area == FieldArea::REGISTERS)
        {
            assemblies[tag.assembly].push_back(&tag);
        }
    }
    std::string text;
    for (auto& [assembly, tags] : assemblies)
    {
        std::string const name = list.assemblies.size() > 1 ? list.service + "_" + assembly : list.service;
        text += text.empty() ? "" : "\n";
        text += AssemblyWriter(list, LegalName(name, MOST_PREFIX_CHARACTERS), std::move(tags)).Write();
    }
    bool const hasBits =
        std::ranges::any_of(list.tags, [](PlcTag const& tag) { return tag.field.area != FieldArea::REGISTERS; });
    if (hasBits && !text.empty())
    {
        text += "\n(* Coils and discrete inputs show nothing that the registers do not show, and are not in this file. "
                "*)\n";
    }
    return text.empty() ? "(* Service " + InComment(list.service) + ": the map has no registers. *)\n" : text;
}

} // namespace ZuControl::Plc
