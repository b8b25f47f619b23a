#include "Plugins/ModbusTcp/Blocks/ResultQueueBlock.h"

#include "ZuApi/Exception.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <random>

namespace ModbusTcp
{

using namespace ZuControl::ControlProtocol;

namespace
{

constexpr uint16 MOST = std::numeric_limits<uint16>::max();
constexpr int32 MISSING_VALUE = std::numeric_limits<int32>::min();

struct Head
{
    char const* name;
    FieldType type;
    uint16 offset;
    char const* comment;
    FieldRole role = FieldRole::VALUE;
};

/// The registers before the values.
constexpr Head HEADS[] = {
    {"acknowledged", FieldType::UINT, 0, "write the number of the held result here", FieldRole::QUEUE_ACKNOWLEDGE},
    {"number", FieldType::UINT, 1, "number of the held result, 0 for none", FieldRole::QUEUE_NUMBER},
    {"waiting", FieldType::UINT, 2, "results that wait, the held one included"},
    {"lost", FieldType::UINT, 3, "lost results, modulo 65536"},
    {"session", FieldType::UINT, 4, "another number tells that the queue is another one", FieldRole::QUEUE_SESSION},
    {"decisions", FieldType::UINT, 5, "bit 0: the first source is within limits"},
    {"valid", FieldType::UINT, 6, "bit 0: the value of the first source is valid"},
    {"lostBefore", FieldType::UINT, 7, "results lost directly before the held one", FieldRole::QUEUE_LOST_BEFORE},
    {"frame", FieldType::ULINT, 8, "frame counter of the held result"},
    {"time", FieldType::ULINT, 12, "time of the held result"},
};

/// A random number other than 0.
uint16 RandomNumber()
{
    std::random_device device;
    return static_cast<uint16>(std::uniform_int_distribution<unsigned>(1, MOST)(device));
}

} // namespace

ResultQueueBlock::Result::Result()
{
    values.fill(MISSING_VALUE);
}

ResultQueueBlock::ResultQueueBlock(RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo)
    : SourceListBlock(params, usedInfo), lastNumber(RandomNumber()), session(RandomNumber())
{
}

ResultQueueBlock::~ResultQueueBlock() = default;

void ResultQueueBlock::Serialize(void* destination, size_t destinationSize, void const* source, size_t sourceSize)
{
    CheckSizes(destination, destinationSize, source, sourceSize, sizeof(Content));
    Content content;
    std::memcpy(&content, source, sizeof content);
    RegisterEncoder const encoder = ValueEncoder();
    auto* const bytes = static_cast<uint8*>(destination);
    std::size_t offset = 0;
    auto const write = [&](auto value) {
        encoder.Write(bytes + offset, value);
        offset += sizeof value;
    };
    Result const& held = content.held;
    for (uint16 const value : {content.acknowledged, held.number, content.waiting, content.lost, content.session,
                               held.decisions, held.valid, held.lostBefore})
    {
        write(value);
    }
    write(held.frame);
    write(held.timeUsec);
    for (int32 const value : held.values)
    {
        write(value);
    }
}

void ResultQueueBlock::Deserialize(void* destination, size_t destinationSize, void const* source, size_t sourceSize)
{
    uint16 number = 0;
    if (source == nullptr || sourceSize != sizeof number || destination == nullptr || destinationSize != sizeof number)
    {
        ZU_THROW(Zu::Status::WRONG_BUFFER_SIZE, "Insufficient buffer size available for data deserialization.");
    }
    Deserialize16(number, static_cast<uint8 const*>(source), 0);
    std::memcpy(destination, &number, sizeof number);
}

uint64 ResultQueueBlock::SetDepth(uint32 depth)
{
    std::size_t const size = std::clamp<uint32>(depth, 1, MOST_RESULTS);
    if (size == ring.size())
    {
        return 0;
    }
    std::vector<Result> newRing(size);
    std::size_t const kept = std::min(count, size);
    for (std::size_t i = 0; i < kept; ++i)
    {
        newRing[i] = ring[(first + i) % ring.size()];
    }
    uint64 const dropped = count - kept;
    ring.swap(newRing);
    first = 0;
    count = kept;
    lost = static_cast<uint16>(lost + dropped);
    lostBefore = static_cast<uint16>(std::min<uint64>(lostBefore + dropped, MOST));
    return dropped;
}

bool ResultQueueBlock::Acknowledge(uint16 number)
{
    if (count > 0 && number == ring[first].number)
    {
        first = (first + 1) % ring.size();
        --count;
        acknowledged = number;
        isOverflowing = isOverflowing && count > 0;
        return true;
    }
    return number == 0 || number == acknowledged;
}

std::vector<RegisterField> ResultQueueBlock::Fields() const
{
    std::vector<RegisterField> fields;
    for (Head const& head : HEADS)
    {
        RegisterField& field = fields.emplace_back();
        field.name = head.name;
        field.type = head.type;
        field.offset = head.offset;
        field.comment = head.comment;
        field.role = head.role;
        field.source = TYPE; // a short name in place of the list
        if (head.type == FieldType::ULINT)
        {
            field.count = 4;
            field.invalid = Result::NO_READING;
        }
    }
    fields.front().isWritable = true;
    fields.back().unit = "us";
    AddFields(fields, [](std::size_t place) {
        RegisterField field;
        field.name = "queued";
        field.type = FieldType::DINT;
        field.offset = static_cast<uint16>(FIRST_VALUE + 2 * place);
        field.count = 2;
        field.divisor = 1000;
        field.invalid = static_cast<uint32>(MISSING_VALUE);
        field.comment = "value in the held result";
        return field;
    });
    for (RegisterField& field : fields)
    {
        if (field.type == FieldType::DINT)
        {
            field.unit = UnitOfSource(field.source);
        }
    }
    return fields;
}

void ResultQueueBlock::Take(std::size_t place, Reading const& reading)
{
    isNextFilled = true;
    if (reading.stamp.has_value())
    {
        next.frame = reading.stamp->stampCounter;
        next.timeUsec = reading.stamp->stampTime;
    }
    if (reading.measurement.has_value())
    {
        auto const bit = static_cast<uint16>(1u << place);
        next.values[place] = reading.measurement->value;
        next.valid = static_cast<uint16>(next.valid | bit);
        next.decisions = static_cast<uint16>(next.decisions | (reading.measurement->decision == 1 ? bit : 0));
    }
}

SourceListBlock::Outcome ResultQueueBlock::EndSet()
{
    if (!isNextFilled)
    {
        return {};
    }
    isNextFilled = false;
    Result result;
    std::swap(result, next);
    if (count >= ring.size())
    {
        ++lost;
        lostBefore = static_cast<uint16>(std::min<unsigned>(lostBefore + 1u, MOST));
        isOverflowing = true;
        return {true, true};
    }
    result.number = TakeNumber();
    result.lostBefore = lostBefore;
    lostBefore = 0;
    ring[(first + count) % ring.size()] = result;
    ++count;
    return {true, false};
}

void ResultQueueBlock::Blank()
{
}

void ResultQueueBlock::Encode(std::span<uint8> bytes)
{
    Content content;
    content.acknowledged = acknowledged;
    content.waiting = static_cast<uint16>(count); // at most MOST_RESULTS
    content.lost = lost;
    content.session = session;
    if (count > 0)
    {
        content.held = ring[first];
    }
    Serialize(bytes.data(), bytes.size(), &content, sizeof content);
}

uint64 ResultQueueBlock::Clear()
{
    uint64 const dropped = count;
    count = 0;
    next = {};
    isNextFilled = false;
    acknowledged = 0;
    session = NewSession();
    lost = static_cast<uint16>(lost + dropped);
    lostBefore = static_cast<uint16>(std::min<uint64>(lostBefore + dropped, MOST));
    isOverflowing = false;
    return dropped;
}

uint16 ResultQueueBlock::TakeNumber()
{
    lastNumber = lastNumber == MOST ? uint16{1} : static_cast<uint16>(lastNumber + 1);
    return lastNumber;
}

uint16 ResultQueueBlock::NewSession() const
{
    uint16 const number = RandomNumber();
    return number != session ? number : static_cast<uint16>(number == MOST ? 1 : number + 1);
}

} // namespace ModbusTcp
