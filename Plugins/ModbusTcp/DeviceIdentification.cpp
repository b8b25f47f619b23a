#include "Plugins/ModbusTcp/DeviceIdentification.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace ModbusTcp
{

namespace
{

// Access codes. Regular (2) and extended (3) access return the same objects, because there are no extended ones.
constexpr uint8 BASIC = 1;
constexpr uint8 INDIVIDUAL = 4;

constexpr uint8 CONFORMITY_REGULAR_AND_INDIVIDUAL = 0x82;
constexpr uint8 NO_MORE_FOLLOWS = 0;
constexpr std::size_t REQUEST_BYTES = 3;
constexpr std::size_t ANSWER_HEAD_BYTES = 6;

struct Object
{
    uint8 id;
    std::string_view text;
};

constexpr std::size_t BASIC_COUNT = 3;
constexpr std::array<Object, 4> OBJECTS = {{
    {0, "ZuControl"}, // vendor
    {1, "ModbusTcp"}, // product code
    {2, "1.0.0"},     // revision
    {4, "ZuControl Modbus TCP"},
}};

constexpr std::size_t AllBytes()
{
    std::size_t bytes = 1 + ANSWER_HEAD_BYTES;
    for (Object const& object : OBJECTS)
    {
        bytes += 2 + object.text.size();
    }
    return bytes;
}
static_assert(AllBytes() <= 253, "all objects must fit one answer: none is ever split");

std::span<Object const> Choose(uint8 access, uint8 objectId)
{
    std::span<Object const> const all = OBJECTS;
    auto const named = std::ranges::find(OBJECTS, objectId, &Object::id);
    auto const position = static_cast<std::size_t>(named - OBJECTS.begin());
    if (access == INDIVIDUAL)
    {
        return position < all.size() ? all.subspan(position, 1) : std::span<Object const>{};
    }
    std::span<Object const> const offered = access == BASIC ? all.first(BASIC_COUNT) : all;
    // A stream from an object id that does not exist begins at the first object.
    return position < offered.size() ? offered.subspan(position) : offered;
}

} // namespace

ModbusException DeviceIdentification::Read(std::span<uint8 const> request, std::span<uint8> answer,
                                           std::size_t& answerBytes)
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
    std::span<Object const> const objects = Choose(access, request[2]);
    if (objects.empty())
    {
        return ModbusException::ILLEGAL_DATA_ADDRESS;
    }
    std::array<uint8, ANSWER_HEAD_BYTES> const head = {INTERFACE_TYPE,  access, CONFORMITY_REGULAR_AND_INDIVIDUAL,
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
