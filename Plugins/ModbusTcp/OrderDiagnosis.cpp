#include "Plugins/ModbusTcp/OrderDiagnosis.h"

#include "ZuApi/Exception.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <charconv>
#include <cmath>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

namespace ModbusTcp
{

using ZuControl::ControlProtocol::BlockOrder;
using ZuControl::ControlProtocol::NameOf;

namespace
{

using Words = std::vector<uint16>;

enum class Kind : uint8
{
    INTEGER,
    REAL,
    TEXT
};

/// A data type as masters offer it.
struct Shape
{
    std::string_view name;
    Kind kind;
    uint16 registers; ///< of one value; a text takes as many as it needs
};

constexpr Shape SHAPES[] = {
    {"UINT", Kind::INTEGER, 1},   {"INT", Kind::INTEGER, 1},    {"WORD", Kind::INTEGER, 1},
    {"UINT16", Kind::INTEGER, 1}, {"INT16", Kind::INTEGER, 1},  {"UDINT", Kind::INTEGER, 2},
    {"DINT", Kind::INTEGER, 2},   {"DWORD", Kind::INTEGER, 2},  {"UINT32", Kind::INTEGER, 2},
    {"INT32", Kind::INTEGER, 2},  {"ULINT", Kind::INTEGER, 4},  {"LINT", Kind::INTEGER, 4},
    {"LWORD", Kind::INTEGER, 4},  {"UINT64", Kind::INTEGER, 4}, {"INT64", Kind::INTEGER, 4},
    {"REAL", Kind::REAL, 2},      {"FLOAT", Kind::REAL, 2},     {"LREAL", Kind::REAL, 4},
    {"DOUBLE", Kind::REAL, 4},    {"STRING", Kind::TEXT, 1},    {"TEXT", Kind::TEXT, 1},
};

/// How a master puts the registers of a value together.
enum class WordOrder : uint8
{
    STRAIGHT, ///< the first register is the most significant
    REVERSED,
    HALVES_SWAPPED, ///< of 64 bits, the halves
    PAIRS_SWAPPED   ///< of 64 bits, the registers in each half
};

struct MasterOrder
{
    WordOrder words = WordOrder::STRAIGHT;
    bool areBytesSwapped = false;
};

/// How masters number registers: the number of the first register.
struct Numbering
{
    uint32 first;
};

constexpr Numbering NUMBERINGS[] = {{0}, {1}, {40001}, {30001}, {400001}, {300001}};

/// A shown value: a text, or the bits of a number. Of a REAL, the number itself: masters round it.
struct Shown
{
    uint64 bits = 0;
    double number = 0;
    std::string text;
};

struct Match
{
    OrderTestPlace place;
    uint32 address = 0; ///< of the first register, from 0
    uint32 numbering = 0;
    MasterOrder order;
};

uint16 SwappedBytes(uint16 word)
{
    return static_cast<uint16>(word << 8 | word >> 8);
}

std::string Upper(std::string_view text)
{
    std::string upper(text);
    std::ranges::transform(upper, upper.begin(),
                           [](char letter) { return static_cast<char>(std::toupper(static_cast<uint8>(letter))); });
    return upper;
}

Shape ShapeOf(std::string const& type)
{
    std::string const name = type.empty() ? "UINT" : Upper(type);
    auto const* const found = std::ranges::find(SHAPES, name, &Shape::name);
    if (found == std::end(SHAPES))
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT,
                 "There is no type %1$s. The types are UINT, INT, UDINT, DINT, ULINT, LINT, REAL, LREAL and STRING.",
                 type.c_str());
    }
    return *found;
}

std::vector<std::string> TokensOf(std::string const& shown)
{
    std::vector<std::string> tokens;
    std::string_view rest = shown;
    while (!rest.empty())
    {
        std::size_t const end = std::min(rest.find_first_of(" ,;\t\n"), rest.size());
        if (std::string_view const token = rest.substr(0, end); !token.empty() && token != "and")
        {
            tokens.emplace_back(token);
        }
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return tokens;
}

/// The whole `text` as a number; nothing if it is none.
template <typename Number, typename... Base>
std::optional<Number> NumberIn(std::string_view text, Base... base)
{
    Number number{};
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base...);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

/// The bits of an integer that is shown with or without sign, or as 0x1234 or 16#1234.
std::optional<uint64> BitsIn(std::string_view token, uint16 registers)
{
    uint32 const unused = 64 - 16 * registers;
    if (token.starts_with('-'))
    {
        auto const number = NumberIn<int64>(token);
        bool const fits = number.has_value() && *number >= INT64_MIN >> unused;
        return fits ? std::optional(static_cast<uint64>(*number) << unused >> unused) : std::nullopt;
    }
    bool const isHex = token.starts_with("0x") || token.starts_with("0X");
    bool const isIec = token.starts_with("16#");
    auto const number =
        isHex || isIec ? NumberIn<uint64>(token.substr(isHex ? 2 : 3), 16) : NumberIn<uint64>(token, 10);
    return number.has_value() && *number <= UINT64_MAX >> unused ? number : std::nullopt;
}

std::optional<Shown> ValueIn(std::string const& token, Shape const& shape)
{
    if (shape.kind == Kind::REAL)
    {
        auto const number = NumberIn<double>(token);
        return number.has_value() ? std::optional(Shown{0, *number, {}}) : std::nullopt;
    }
    auto const bits = BitsIn(token, shape.registers);
    return bits.has_value() ? std::optional(Shown{*bits, 0, {}}) : std::nullopt;
}

Shown TextIn(std::string const& shown)
{
    std::size_t const begin = std::min(shown.find_first_not_of(" \t\n"), shown.size());
    std::size_t const end = shown.find_last_not_of(" \t\n") + 1;
    std::string const text = shown.substr(begin, std::max(begin, end) - begin);
    if (text.empty() || text.size() % 2 != 0)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "Tell the text that the master shows, two characters for each register.");
    }
    return {0, 0, text};
}

std::vector<Shown> ValuesIn(OrderQuestion const& question, Shape const& shape)
{
    if (shape.kind == Kind::TEXT)
    {
        return {TextIn(question.shown)};
    }
    std::vector<Shown> values;
    for (std::string const& token : TokensOf(question.shown))
    {
        auto const value = ValueIn(token, shape);
        if (!value.has_value())
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "\"%1$s\" is no value of the type %2$s.", token.c_str(),
                     std::string(shape.name).c_str());
        }
        values.push_back(*value);
    }
    if (values.empty())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "Tell the values that the master shows, \"17142 59769\" for example.");
    }
    return values;
}

Words Arranged(std::span<uint16 const> sent, MasterOrder order)
{
    Words words(sent.begin(), sent.end());
    if (order.words == WordOrder::REVERSED)
    {
        std::ranges::reverse(words);
    }
    if (order.words == WordOrder::HALVES_SWAPPED)
    {
        std::rotate(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(words.size() / 2), words.end());
    }
    for (std::size_t i = 0; order.words == WordOrder::PAIRS_SWAPPED && i + 1 < words.size(); i += 2)
    {
        std::swap(words[i], words[i + 1]);
    }
    for (uint16& word : words)
    {
        word = order.areBytesSwapped ? SwappedBytes(word) : word;
    }
    return words;
}

uint64 BitsOf(Words const& words)
{
    uint64 bits = 0;
    for (uint16 const word : words)
    {
        bits = bits << 16 | word;
    }
    return bits;
}

std::string TextOf(Words const& words)
{
    std::string text;
    for (uint16 const word : words)
    {
        text += {static_cast<char>(word >> 8), static_cast<char>(word & 0xFF)};
    }
    return text;
}

bool IsNear(double shown, double value)
{
    return std::abs(shown - value) <= 1e-4 * std::abs(value); // masters round
}

bool IsShown(Shown const& value, Shape const& shape, Words const& words)
{
    switch (shape.kind)
    {
    case Kind::TEXT:
        return TextOf(words) == value.text;
    case Kind::REAL:
        return IsNear(value.number, words.size() == 2 ? double{std::bit_cast<float>(static_cast<uint32>(BitsOf(words)))}
                                                      : std::bit_cast<double>(BitsOf(words)));
    case Kind::INTEGER:
        break;
    }
    return BitsOf(words) == value.bits;
}

std::vector<MasterOrder> OrdersFor(std::size_t registers)
{
    std::vector<MasterOrder> orders;
    for (bool const areBytesSwapped : {false, true})
    {
        orders.push_back({WordOrder::STRAIGHT, areBytesSwapped});
        if (registers > 1)
        {
            orders.push_back({WordOrder::REVERSED, areBytesSwapped});
        }
        if (registers > 2 && registers % 2 == 0)
        {
            orders.push_back({WordOrder::PAIRS_SWAPPED, areBytesSwapped});
            orders.push_back({WordOrder::HALVES_SWAPPED, areBytesSwapped});
        }
    }
    return orders;
}

/// The search for the place, the numbering and the order that give the shown values.
class Search final
{
public:
    Search(OrderQuestion const& usedQuestion, std::vector<OrderTestPlace> const& usedPlaces)
        : question(usedQuestion),
          places(usedPlaces),
          shape(ShapeOf(question.type)),
          values(ValuesIn(question, shape)),
          registers(shape.kind == Kind::TEXT ? values.front().text.size() / 2 : shape.registers)
    {
    }

    std::optional<Match> Run()
    {
        for (Numbering const numbering : NUMBERINGS)
        {
            for (OrderTestPlace const& place : places)
            {
                if (auto const match = At(place, numbering.first))
                {
                    return match;
                }
            }
        }
        return std::nullopt;
    }

    bool WasInABlock() const
    {
        return wasInABlock;
    }

    Shape const& Type() const
    {
        return shape;
    }

    std::size_t Registers() const
    {
        return registers;
    }

private:
    std::optional<Match> At(OrderTestPlace const& place, uint32 numbering)
    {
        uint64 const begin = uint64{place.first} + numbering;
        uint64 const end = question.address + uint64{registers} * values.size();
        if (question.address < begin || end > begin + OrderTestBlock::REGISTERS)
        {
            return std::nullopt;
        }
        wasInABlock = true;
        for (MasterOrder const order : OrdersFor(registers))
        {
            if (AreShown(place, question.address - begin, order))
            {
                return Match{place, question.address - numbering, numbering, order};
            }
        }
        return std::nullopt;
    }

    bool AreShown(OrderTestPlace const& place, uint64 offset, MasterOrder order) const
    {
        auto const sent = SentRegisters(place.order);
        for (std::size_t i = 0; i < values.size(); ++i)
        {
            auto const part = std::span(sent).subspan(offset + i * registers, registers);
            if (!IsShown(values[i], shape, Arranged(part, order)))
            {
                return false;
            }
        }
        return true;
    }

    OrderQuestion const& question;
    std::vector<OrderTestPlace> const& places;
    Shape const shape;
    std::vector<Shown> const values;
    std::size_t const registers; // of one value
    bool wasInABlock = false;
};

/// How to make the blocks send an order.
std::string HowToSend(BlockOrder order)
{
    std::string setting = order.isBigEndian ? "0 (big endian)" : "1 (little endian)";
    if (order.areBytesSwapped)
    {
        setting = order.isBigEndian ? "2 (big endian, bytes swapped)" : "3 (little endian, bytes swapped)";
    }
    return "set registerOrder to " + setting + ", so that the blocks send " + NameOf(order);
}

OrderFinding FindingOfOneRegister(Match const& match)
{
    if (match.order.areBytesSwapped == match.place.order.areBytesSwapped)
    {
        return {true, "",
                "Your master shows the registers as they are meant. Registers of 16 bits do not tell the order of "
                "words: read the UDINT at " +
                    std::to_string(match.place.first + 2 + match.numbering) + " too."};
    }
    BlockOrder const fitting{match.place.order.isBigEndian, match.order.areBytesSwapped};
    return {false, "",
            "Your master swaps the bytes of each register. Either " + HowToSend(fitting) +
                ", or change \"swap bytes\" in the master. Then read the UDINT at " +
                std::to_string(match.place.first + 2 + match.numbering) + ", which tells the order of words."};
}

OrderFinding FindingOfAText(Match const& match)
{
    bool const areWordsSwapped = match.order.words != WordOrder::STRAIGHT;
    bool const areBytesSwapped = match.order.areBytesSwapped != match.place.order.areBytesSwapped;
    if (!areWordsSwapped && !areBytesSwapped)
    {
        return {true, "", "Your master shows texts right."};
    }
    std::string answer = "Your master swaps the ";
    answer += areWordsSwapped && areBytesSwapped ? "registers and the bytes" : areWordsSwapped ? "registers" : "bytes";
    answer += " of texts.";
    if (areBytesSwapped)
    {
        answer += " Change \"swap bytes\" in the master, or give the blocks the order " +
                  std::string(NameOf({match.place.order.isBigEndian, match.order.areBytesSwapped})) + ".";
    }
    if (areWordsSwapped)
    {
        answer +=
            " The registers of a text always come in their order: switch \"swap words\" off in the master for texts.";
    }
    return {false, "", answer};
}

/// Of an order of words that no service has.
OrderFinding FindingOfMixedWords(MasterOrder order)
{
    bool const areHalves = order.words == WordOrder::HALVES_SWAPPED;
    std::string const name = areHalves ? (order.areBytesSwapped ? "FEHGBADC" : "EFGHABCD")
                                       : (order.areBytesSwapped ? "DCBAHGFE" : "CDABGHEF");
    return {false, name,
            "Your master reads 64 bit values as " + name + ": it exchanges the " +
                (areHalves ? "two halves" : "registers of each half") +
                ". The blocks have no such order: choose another order for 64 bit values in the master, or read two "
                "UDINT in place of each."};
}

OrderFinding FindingOfANumber(Match const& match, std::size_t registers)
{
    if (match.order.words == WordOrder::HALVES_SWAPPED || match.order.words == WordOrder::PAIRS_SWAPPED)
    {
        return FindingOfMixedWords(match.order);
    }
    BlockOrder const read{match.order.words == WordOrder::STRAIGHT, match.order.areBytesSwapped};
    BlockOrder const sent = match.place.order;
    std::string const bits = std::to_string(16 * registers) + " bit values";
    std::string const orders = std::string(NameOf(read)) + ", and the block sends " + NameOf(sent) + ".";
    if (read == sent)
    {
        return {true, NameOf(read), "Your master reads " + bits + " right: it reads " + orders};
    }
    bool const areWordsSwapped = read.isBigEndian != sent.isBigEndian;
    bool const areBytesSwapped = read.areBytesSwapped != sent.areBytesSwapped;
    std::string const what = areWordsSwapped && areBytesSwapped ? "words and the bytes"
                             : areWordsSwapped                  ? "words"
                                                                : "bytes";
    std::string const option =
        areWordsSwapped && areBytesSwapped ? "\"swap words\" and \"swap bytes\"" : "\"swap " + what + "\"";
    return {false, NameOf(read),
            "Your master swaps the " + what + " of " + bits + ": it reads " + orders + " Either " + HowToSend(read) +
                ", or change " + option + " in the master, so that it reads " + NameOf(sent) + "."};
}

/// The pattern of this type, or of another name for it.
OrderPattern const& PatternOf(Shape const& shape)
{
    std::span<OrderPattern const> const patterns = OrderPatterns();
    auto found = std::ranges::find(patterns, shape.name, &OrderPattern::type);
    if (found == patterns.end())
    {
        found = std::ranges::find_if(patterns, [&shape](OrderPattern const& pattern) {
            Shape const other = ShapeOf(std::string(pattern.type));
            return other.kind == shape.kind && other.registers == shape.registers;
        });
    }
    return *found;
}

OrderFinding FindingWithoutMatch(Search const& search, OrderTestPlace const& place)
{
    OrderPattern const& pattern = PatternOf(search.Type());
    return {false, "",
            "No order of the block gives this. Check the address and the data type in the master: at register " +
                std::to_string(place.first + pattern.offset) + " it should show " + std::string(pattern.type) + " " +
                pattern.shown + "."};
}

} // namespace

std::array<uint16, OrderTestBlock::REGISTERS> SentRegisters(BlockOrder order)
{
    std::array<uint16, OrderTestBlock::REGISTERS> sent{};
    for (OrderPattern const& pattern : OrderPatterns())
    {
        bool const isReversed = !order.isBigEndian && pattern.fieldType != ZuControl::ControlProtocol::FieldType::TEXT;
        for (uint16 i = 0; i < pattern.registers; ++i)
        {
            uint32 const lower = isReversed ? i : pattern.registers - 1u - i;
            auto const word = static_cast<uint16>(pattern.bits >> 16 * lower);
            sent[pattern.offset + std::size_t{i}] = order.areBytesSwapped ? SwappedBytes(word) : word;
        }
    }
    return sent;
}

OrderFinding Diagnose(OrderQuestion const& question, std::vector<OrderTestPlace> const& places)
{
    Search search(question, places);
    if (places.empty())
    {
        ZU_THROW(Zu::Status::WRONG_STATE, "There is no block of the type OrderTest. Add one first.");
    }
    auto const match = search.Run();
    if (!match.has_value() && !search.WasInABlock())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT,
                 "The values at %1$u do not lie in the OrderTest block, which takes the registers %2$u to %3$u.",
                 unsigned{question.address}, unsigned{places.front().first},
                 unsigned{places.front().first} + OrderTestBlock::REGISTERS - 1);
    }
    if (!match.has_value())
    {
        return FindingWithoutMatch(search, places.front());
    }
    OrderFinding finding = search.Type().kind == Kind::TEXT ? FindingOfAText(*match)
                           : search.Registers() == 1        ? FindingOfOneRegister(*match)
                                                            : FindingOfANumber(*match, search.Registers());
    if (match->numbering != 0)
    {
        finding.answer += " Your master counts from " + std::to_string(match->numbering) + ": its " +
                          std::to_string(question.address) + " is register " + std::to_string(match->address) + ".";
    }
    return finding;
}

} // namespace ModbusTcp
