#include "Plugins/ModbusTcp/DeviceIdentification.h"

#include "ZuControl/ControlProtocol/Fingerprint.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <string_view>

namespace ModbusTcp
{

namespace
{

// Access codes. Extended access (3) returns all objects.
constexpr uint8 BASIC = 1;
constexpr uint8 REGULAR = 2;
constexpr uint8 INDIVIDUAL = 4;

constexpr uint8 CONFORMITY_EXTENDED_AND_INDIVIDUAL = 0x83;
constexpr uint8 NO_MORE_FOLLOWS = 0;
constexpr std::size_t REQUEST_BYTES = 3;
constexpr std::size_t ANSWER_HEAD_BYTES = 6;

struct Object
{
    uint8 id;
    std::string_view text;
};

constexpr std::size_t BASIC_COUNT = 3;
constexpr std::array<Object, 4> FIXED = {{
    {0, "ZuControl"}, // vendor
    {1, "ModbusTcp"}, // product code
    {2, "1.0.0"},     // revision
    {4, "ZuControl Modbus TCP"},
}};

constexpr std::size_t EXTENDED_COUNT = 5;
constexpr uint8 FIRST_EXTENDED = 0x80;
constexpr std::size_t MOST_TEXT_BYTES = 64; // of an extended object: as many as a job's name can have

constexpr std::size_t MostBytes()
{
    std::size_t bytes = 1 + ANSWER_HEAD_BYTES + EXTENDED_COUNT * 2;
    for (Object const& object : FIXED)
    {
        bytes += 2 + object.text.size();
    }
    constexpr std::size_t NUMBERS_BYTES = 10 + 8 + 3; // the number of blocks, the fingerprint and its version
    return bytes + 2 * MOST_TEXT_BYTES + NUMBERS_BYTES;
}
static_assert(MostBytes() <= 253, "all objects must fit one answer: none is ever split");

/// All objects, in the order of their ids. They refer to the texts, which are members.
class Objects final
{
public:
    static constexpr std::size_t COUNT = FIXED.size() + EXTENDED_COUNT;

    explicit Objects(MapIdentity const& identity)
        : texts{identity.name.substr(0, MOST_TEXT_BYTES), std::to_string(identity.blockCount),
                Hexadecimal(identity.fingerprint), std::to_string(ZuControl::ControlProtocol::Fingerprint::VERSION),
                identity.job.substr(0, MOST_TEXT_BYTES)}
    {
        auto written = std::ranges::copy(FIXED, objects.begin()).out;
        for (std::size_t i = 0; i < texts.size(); ++i)
        {
            *written++ = {static_cast<uint8>(FIRST_EXTENDED + i), texts[i]};
        }
    }

    Objects(Objects const&) = delete;
    Objects& operator=(Objects const&) = delete;

    /// The objects that a request asks for; none for an object that does not exist.
    std::span<Object const> Choose(uint8 access, uint8 objectId) const
    {
        std::span<Object const> const all = objects;
        auto const named = std::ranges::find(objects, objectId, &Object::id);
        auto const position = static_cast<std::size_t>(named - objects.begin());
        if (access == INDIVIDUAL)
        {
            return position < all.size() ? all.subspan(position, 1) : std::span<Object const>{};
        }
        std::span<Object const> const offered = access == BASIC     ? all.first(BASIC_COUNT)
                                                : access == REGULAR ? all.first(FIXED.size())
                                                                    : all;
        // A stream from an object id that does not exist begins at the first object.
        return position < offered.size() ? offered.subspan(position) : offered;
    }

private:
    static std::string Hexadecimal(uint32 number)
    {
        std::array<char, 9> digits{};
        std::snprintf(digits.data(), digits.size(), "%08X", unsigned{number});
        return digits.data();
    }

    std::array<std::string, EXTENDED_COUNT> const texts;
    std::array<Object, COUNT> objects;
};

} // namespace

ModbusException DeviceIdentification::Read(IRegisterModel& model, std::span<uint8 const> request,
                                           std::span<uint8> answer, std::size_t& answerBytes)
{
    if (request.empty() || request[0] != INTERFACE_TYPE)
    {
        return ModbusException::ILLEGAL_FUNCTION; // other interfaces of this function are not offered
    }
    if (request.size() != REQUEST_BYTES || request[1] < BASIC || request[1] > INDIVIDUAL)
    {
        return ModbusException::ILLEGAL_DATA_VALUE;
    }
    uint8 const access = request[1];
    Objects const all(model.Identity());
    std::span<Object const> const objects = all.Choose(access, request[2]);
    if (objects.empty())
    {
        return ModbusException::ILLEGAL_DATA_ADDRESS;
    }
    std::array<uint8, ANSWER_HEAD_BYTES> const head = {INTERFACE_TYPE,  access, CONFORMITY_EXTENDED_AND_INDIVIDUAL,
                                                       NO_MORE_FOLLOWS, 0,      static_cast<uint8>(objects.size())};
    auto written = std::ranges::copy(head, answer.begin()).out;
    for (Object const& object : objects)
    {
        *written++ = object.id;
        *written++ = static_cast<uint8>(object.text.size());
        written = std::ranges::copy(object.text, written).out;
    }
    answerBytes = static_cast<std::size_t>(written - answer.begin());
    return ModbusException::NONE;
}

} // namespace ModbusTcp
