#include "Plugins/AsciiTcp/AsciiOutputMap.h"

#include "Plugins/AsciiTcp/AsciiText.h"
#include "Plugins/Common/TextLimits.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Threads/Locker.h"
#include "ZuControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"
#include "ZuCore/DataSourceHash.h"

#include <algorithm>

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

AsciiOutputActions::AsciiOutputActions(AsciiOutputMap& changedMap)
    : ProtocolOutputActionTarget(changedMap), map(changedMap)
{
}

AsciiOutputActions::~AsciiOutputActions() = default;

std::shared_ptr<Zu::Params::Group> AsciiOutputActions::InvokeAction(std::string const& actionId,
                                                                    Zu::Params::Group const& params)
{
    CheckArguments(params);
    if (actionId != PROTOCOL_OUTPUT_ACTION_ID_REMOVE_ALL)
    {
        return ProtocolOutputActionTarget::InvokeAction(actionId, params);
    }
    map.RemoveAll();
    return std::make_shared<Zu::Params::Group>("");
}

void AsciiOutputActions::CheckArguments(Zu::Params::Group const& params) const
{
    PluginCommon::CheckTexts(params);
}

using ZuControl::ControlProtocol::TextIdStandardProtocolOutputMap;

namespace
{

/// Holds a map's lock. Do not nest it.
class MapLock final
{
public:
    explicit MapLock(TextIdStandardProtocolOutputMap& lockedMap) : map(lockedMap)
    {
        map.BeginLock();
    }

    ~MapLock()
    {
        map.EndLock();
    }

    MapLock(MapLock const&) = delete;
    MapLock& operator=(MapLock const&) = delete;

private:
    TextIdStandardProtocolOutputMap& map;
};

} // namespace

std::shared_ptr<OutputTable const> OutputTable::Take(TextIdStandardProtocolOutputMap& map)
{
    auto table = std::make_shared<OutputTable>();
    MapLock const guard(map);
    uint64 const count = map.Count();
    for (uint64 i = 0; i < count; ++i)
    {
        auto const& item = map.At(i);
        Output output{item.outputId.Get(), {}, item.source.Get(), ZuCore::DataSourceHash(item.source.Get())};
        AppendName(output.written, output.name);
        table->places.emplace_back(output.dataSource, table->outputs.size());
        table->outputs.push_back(std::move(output));
    }
    std::ranges::sort(table->places);
    return table;
}

std::size_t OutputTable::FindName(std::string_view name) const
{
    auto const found =
        std::lower_bound(outputs.begin(), outputs.end(), name, [](Output const& output, std::string_view wanted) {
            return std::string_view(output.name) < wanted;
        });
    return found != outputs.end() && found->name == name ? static_cast<std::size_t>(found - outputs.begin()) : NOWHERE;
}

std::size_t OutputTable::FindDataSource(uint64 dataSource) const
{
    auto const found = std::lower_bound(places.begin(), places.end(), std::pair(dataSource, std::size_t{0}));
    return found != places.end() && found->first == dataSource ? found->second : NOWHERE;
}

} // namespace AsciiTcp
