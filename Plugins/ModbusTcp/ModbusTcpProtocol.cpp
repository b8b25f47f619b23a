#include "Plugins/ModbusTcp/ModbusTcpProtocol.h"

#include "Plugins/ModbusTcp/Blocks/SourceListBlock.h"
#include "Plugins/ModbusTcp/ModbusBlocks.h"
#include "Plugins/ModbusTcp/ModbusConversation.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuControl/ControlProtocol/Fingerprint.h"
#include "ZuControl/ControlProtocol/LayoutCopy.h"
#include "wApi/wArrayList.h"
#include "wApi/wMutex.h"

#include <nlohmann/json.hpp>

namespace ModbusTcp
{

using namespace ZuControl::ControlProtocol;

namespace
{

constexpr char const* KEY_LIFETIME = "lifetime";

BlockOrder OrderOf(RegisterOrder order)
{
    return {.isBigEndian = order == RegisterOrderBigEndian || order == RegisterOrderBigEndianSwapped,
            .areBytesSwapped = order >= RegisterOrderBigEndianSwapped};
}

} // namespace

ModbusTcpProtocol::ModbusTcpProtocol(ControlProtocolEnviron const& environ)
    : TcpServiceProtocol({.number = PROTOCOL_ID,
                          .typeName = TYPE_NAME,
                          .displayName = DISPLAY_NAME,
                          .writeTimeout = WRITE_TIMEOUT,
                          .isLive = true},
                         environ),
      assembly(true, 0, LAST_REGISTER),
      assemblyActionTarget(assembly),
      encoder(image, counters),
      map({.image = image,
           .results = encoder,
           .commands = *this,
           .latestState = [this](std::string const& scannerId) { return LatestState(scannerId); },
           .mapIdentity = [this] { return Identity(); },
           .counters = counters}),
      problems(*environ.problems), // the base class has checked it
      queueProblem(environ.problems)
{
    AddModbusBlockTypes(assembly);
    assemblyGroup.Add(assembly, assemblyActionTarget);
    ProtocolInitParams initParams;
    initParams.registerAssemblyGroup = &assemblyGroup;
    InitService({params, metrics, counters}, initParams);
    ConfigureDefaultJob(assembly);
    TakeLayout();
}

ModbusTcpProtocol::~ModbusTcpProtocol()
{
    EndService();
}

void ModbusTcpProtocol::LoadPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json const& document)
{
    if (domain != ZuCommon::PersistDomain::PROTOCOL)
    {
        return;
    }
    nlohmann::json const& lifetime = document.at(KEY_LIFETIME);
    Zu::MutexLock const guard(metricsLock);
    Zu::Properties::JsonSerializer::Validate(metrics.lifetime, lifetime);
    Zu::Properties::JsonSerializer::Deserialize(metrics.lifetime, lifetime);
    metrics.lifetime.Resume();
}

void ModbusTcpProtocol::SavePersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document)
{
    if (domain != ZuCommon::PersistDomain::PROTOCOL)
    {
        return;
    }
    Zu::MutexLock const guard(metricsLock);
    metrics.lifetime.Show();
    document[KEY_LIFETIME] = Zu::Properties::JsonSerializer::Serialize(metrics.lifetime);
}

std::vector<std::string> ModbusTcpProtocol::DataSourceList() const
{
    std::vector<std::string> sources = ProtocolBase::DataSourceList();
    for (std::size_t i = 0, count = sources.size(); i < count; ++i)
    {
        std::string const list = sources[i]; // a copy: the vector grows
        if (list.find(',') != std::string::npos)
        {
            auto const names = SourceListBlock::Split(list);
            sources.insert(sources.end(), names.begin(), names.end());
        }
    }
    return sources;
}

void ModbusTcpProtocol::ProcessResultSets(void* resultSets)
{
    if (assembly.ChangeCount() != layoutChangeCount.load(std::memory_order_relaxed))
    {
        TakeLayout(); // a change that failed halfway is not notified
    }
    encoder.Process(*static_cast<wArrayList const*>(resultSets));
}

void ModbusTcpProtocol::OnStartScan()
{
    TcpServiceProtocol::OnStartScan();
    encoder.Blank();
}

void ModbusTcpProtocol::RegisterAssemblyUpdate(char const*)
{
    TakeLayout();
}

void ModbusTcpProtocol::ConfigureDefaultRegisterAssembly()
{
    ConfigureDefaultJob(assembly);
    TakeLayout();
    TellDataSources();
}

ZuControl::IControlActionTarget* ModbusTcpProtocol::ActionTarget()
{
    return &orderTest;
}

std::unique_ptr<PluginCommon::ITcpConversation> ModbusTcpProtocol::MakeConversation()
{
    return std::make_unique<ModbusConversation>(map, counters);
}

void ModbusTcpProtocol::ApplyOwnParams()
{
    encoder.SetQueueDepth(params.queueDepth.Get());
    BlockOrder const wanted = OrderOf(params.registerOrder.Get());
    if (wanted != order)
    {
        ChangeOrder(wanted);
    }
}

void ModbusTcpProtocol::ChangeOrder(BlockOrder newOrder)
{
    encoder.Pause(); // no read may see results in mixed orders
    map.ChangeOrder(newOrder.isBigEndian, [this, newOrder] { ModbusTcp::ChangeOrder(assembly, newOrder); });
    TakeLayout(); // before results are shown: the order changes the fingerprint
    encoder.Resume();
    order = newOrder;
}

/// Reports a result queue that has lost results, until the PLC has emptied it.
void ModbusTcpProtocol::ShowMetrics()
{
    int32 const queue = encoder.OverflowingQueue();
    if (queue == shownQueue)
    {
        return;
    }
    queueProblem.Begin();
    if (queue >= 0)
    {
        queueProblem.Register(problems.Add(ZuCommon::ProblemsManager::SEVERITY_WARNING, "ZuControl",
                                           "%1$s has lost results: the PLC reads the result queue at register %2$d "
                                           "too slowly",
                                           DisplayName(), queue));
    }
    queueProblem.End();
    shownQueue = queue;
}

/// The map as the device identification names it. Computed anew only after a change of the assembly.
MapIdentity ModbusTcpProtocol::Identity()
{
    uint64 const changeCount = assembly.ChangeCount(); // before the layout, so that a later change has a larger count
    if (changeCount != identityChangeCount)
    {
        Layout const layout = ReadLayout(assembly);
        identity = {.name = layout.id,
                    .blockCount = static_cast<uint32>(layout.entries.size()),
                    .fingerprint = Fingerprint::Of({layout}),
                    .job = ""};
        identityChangeCount = changeCount;
    }
    return identity;
}

void ModbusTcpProtocol::TakeLayout()
{
    Zu::MutexLock const guard(layoutLock); // from the list to its installation, so that the newest list comes last
    auto const layout = RegisterLayout::Take(assembly);
    encoder.HideFingerprint(*layout);
    map.Install(layout);
    encoder.Install(layout); // shows the fingerprint: last
    layoutChangeCount.store(layout->changeCount, std::memory_order_relaxed);
}

} // namespace ModbusTcp
