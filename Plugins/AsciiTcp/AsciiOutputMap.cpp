#include "Plugins/AsciiTcp/AsciiOutputMap.h"

#include "ZuApi/Threads/Locker.h"

namespace AsciiTcp
{

using ZuControl::ControlProtocol::TextIdStandardOutputItemArgs;

namespace
{

constexpr char const* DEFAULT_NAMES[] = {"meanZ", "points", "width", "zMax", "zMin"};

} // namespace

AsciiOutputMap::AsciiOutputMap() : TextIdStandardProtocolOutputMap(MOST_OUTPUTS)
{
    AsciiOutputMap::Clear();
}

AsciiOutputMap::~AsciiOutputMap() = default;

void AsciiOutputMap::Clear()
{
    Zu::Locker const guard(lock); // held across both steps, so that no other thread sees the empty map
    RemoveAll();
    for (char const* name : DEFAULT_NAMES)
    {
        TextIdStandardOutputItemArgs item;
        item.outputId.Set(name);
        item.source.Set(std::string("profile/") + name);
        Add(item);
    }
}

void AsciiOutputMap::RemoveAll()
{
    TextIdStandardProtocolOutputMap::Clear();
}

} // namespace AsciiTcp
