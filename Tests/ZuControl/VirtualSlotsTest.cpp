#include "Support/VirtualSlot.h"
#include "ZuControl/Control/ControlModuleEnviron.h"
#include "ZuControl/Control/ControlPlugin.h"
#include "ZuControl/Control/IControlActionTarget.h"
#include "ZuControl/Control/IControlDataCache.h"
#include "ZuControl/Control/IControlFactory.h"
#include "ZuControl/Control/IControlHardware.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuControl/Control/IControlManager.h"
#include "ZuControl/Control/IControlResourceAdaptor.h"
#include "ZuControl/Control/IControlScanEngineInterface.h"
#include "ZuControl/Control/IControlScanResults.h"
#include "ZuControl/Control/IControlScanResultsDispatcher.h"
#include "ZuControl/Control/IControlSystemInterface.h"
#include "ZuControl/ControlProtocol/IProtocol.h"
#include "ZuControl/ControlProtocol/IProtocolOutput.h"
#include "ZuControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "ZuControl/ControlProtocol/ProtocolOutputActionTarget.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"
#include "ZuControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"
#include "ZuControl/ControlProtocol/RegisterField.h"
#include "ZuControl/ControlProtocol/RegisterProtocolOutputMap.h"
#include "ZuControl/Protocol/ControlResourceBase.h"

#include <gtest/gtest.h>

namespace ZuControl
{

using namespace ControlProtocol;
using ZuTest::SLOTS_OF_DESTRUCTOR;
using ZuTest::StandInOrder;

TEST(VirtualSlots, OfProtocolsKeepTheirPlaces)
{
    EXPECT_TRUE(StandInOrder(
        SLOTS_OF_DESTRUCTOR, &IProtocol::UpdateMetrics, &IProtocol::ResetMetrics, &IProtocol::DisplayName,
        &IProtocol::EthernetProtocolId, &IProtocol::ParamsUpdate, &IProtocol::ResetParams, &IProtocol::Start,
        &IProtocol::Stop, &IProtocol::BeginUpdateParams, &IProtocol::EndUpdateParams, &IProtocol::Params,
        &IProtocol::ParamsVersion, &IProtocol::AddParamsInternalUpdateEventHandler,
        &IProtocol::RemoveParamsInternalUpdateEventHandler, &IProtocol::NotifyParamsInternalUpdateEventHandler,
        &IProtocol::AddProtocolStatusUpdateEventHandler, &IProtocol::RemoveProtocolStatusUpdateEventHandler,
        &IProtocol::NotifyProtocolStatusUpdateEventHandler, &IProtocol::AddOutputsInternalUpdateEventHandler,
        &IProtocol::RemoveOutputsInternalUpdateEventHandler, &IProtocol::NotifyOutputsInternalUpdateEventHandler,
        &IProtocol::OutputsUpdate, &IProtocol::HasProtocolOutput, &IProtocol::Outputs,
        &IProtocol::HasOutputsActionTarget, &IProtocol::OutputsActionTarget, &IProtocol::ProcessResultSets,
        &IProtocol::RegisterControlScanResultsHandler, &IProtocol::DeregisterControlScanResultsHandler,
        &IProtocol::ActionTarget, &IProtocol::RegisterAssemblyUpdate, &IProtocol::HasRegisterAssemblyActionTarget,
        &IProtocol::RegisterAssemblyActionTarget, &IProtocol::HasRegisterAssemblyGroup, &IProtocol::HasRegisterAssembly,
        &IProtocol::RegisterAssembly, &IProtocol::RegisterAssemblyList, &IProtocol::ConfigureDefaultRegisterAssembly,
        &IProtocol::DataSourceList, &IProtocol::OnStartScan, &IProtocol::OnStopScan, &IProtocol::OnFactoryRestore,
        &IProtocol::UpdateConnectedClientCount, &IProtocol::CompletedOperationStatus, &IProtocol::HardwareManager,
        &IProtocol::InitPersistDomain, &IProtocol::LoadPersistDomain, &IProtocol::SavePersistDomain));
    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &IProtocol::GetMetrics)); // in the table of the second base
}

TEST(VirtualSlots, OfOutputMapsKeepTheirPlaces)
{
    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &IProtocolOutput::BeginLock, &IProtocolOutput::EndLock,
                             &IProtocolOutput::OutputMap, &IProtocolOutput::CreateOutputMapItemArgs,
                             &IProtocolOutput::CreateOutputsArgs, &IProtocolOutput::Add, &IProtocolOutput::AddAll,
                             &IProtocolOutput::Remove, &IProtocolOutput::Count, &IProtocolOutput::At,
                             &IProtocolOutput::Clear, &IProtocolOutput::DataSourceList, &IProtocolOutput::CompactId,
                             &IProtocolOutput::UpdateId));
}

TEST(VirtualSlots, OfTheLogicOfOutputMapsStandBehindThoseOfTheInterface)
{
    constexpr uint64 BEHIND_INTERFACE = SLOTS_OF_DESTRUCTOR + 14;
    using Map = RegisterProtocolOutputMap;

    EXPECT_TRUE(
        StandInOrder(BEHIND_INTERFACE, &Map::OverlapInsert, &Map::GetOverlappingState, &Map::IsDataShiftSupported));
    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &Map::BeginLock, &Map::EndLock)); // a class has the slots of its base
}

TEST(VirtualSlots, OfRegisterAssembliesKeepTheirPlaces)
{
    using Assembly = IProtocolRegisterAssembly;
    using Group = IProtocolRegisterAssemblyGroup;

    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &Assembly::BeginLock, &Assembly::EndLock,
                             &Assembly::AddSupportedBlockType, &Assembly::Add, &Assembly::Remove, &Assembly::Compact,
                             &Assembly::Update, &Assembly::ResetRegisterAssembly,
                             &Assembly::InitDefaultRegisterBlocksForRegisterAssembly,
                             &Assembly::SupportedRegisterBlockTypes, &Assembly::AddedRegisterBlocks,
                             &Assembly::FindAddedBlocksOfTypes, &Assembly::FindAddedScanOutputBlocksSortedByDataSource,
                             &Assembly::Attributes, &Assembly::Properties, &Assembly::DataSourceList, &Assembly::Id));
    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &Group::Add, &Group::Empty, &Group::List, &Group::HasRegisterAssembly,
                             &Group::RegisterAssembly, &Group::ActionTarget, &Group::DataSourceList));
}

TEST(VirtualSlots, OfRegisterBlocksStandBehindThoseOfRecords)
{
    using Block = ProtocolRegisterBlock;
    using ScanOutput = ProtocolScanOutputRegisterBlock;
    constexpr uint64 BEHIND_RECORD = SLOTS_OF_DESTRUCTOR + 4;

    EXPECT_TRUE(
        StandInOrder(BEHIND_RECORD, &Block::Serialize, &Block::Deserialize, &Block::SetDataSource, &Block::DataSource));
    EXPECT_TRUE(StandInOrder(BEHIND_RECORD, &ScanOutput::Serialize, &ScanOutput::Deserialize,
                             &ScanOutput::SetDataSource, &ScanOutput::DataSource, &ScanOutput::SerializeMeasurementMsg,
                             &ScanOutput::SerializeStampMsg, &ScanOutput::SerializeNullMsg));
    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &IProtocolRegisterBlockFactory::Construct));
    EXPECT_TRUE(StandInOrder(0, &IDescribedBlock::Fields)); // its destructor stands behind
}

TEST(VirtualSlots, OfInstancesKeepTheirPlaces)
{
    using Instance = IControlInstance;

    EXPECT_TRUE(StandInOrder(
        SLOTS_OF_DESTRUCTOR, &Instance::Info, &Instance::TypeName, &Instance::EthernetProtocolId, &Instance::Enable,
        &Instance::IsEnabled, &Instance::AddParamsUpdatedEventHandler, &Instance::RemoveParamsUpdatedEventHandler,
        &Instance::AddOutputsUpdatedEventHandler, &Instance::RemoveOutputsUpdatedEventHandler,
        &Instance::AddRegisterAssemblyUpdatedEventHandler, &Instance::RemoveRegisterAssemblyUpdatedEventHandler,
        &Instance::BeginUpdateParameters, &Instance::EndUpdateParameters, &Instance::BeginUpdateOutputsMap,
        &Instance::EndUpdateOutputsMap, &Instance::BeginUpdateRegisterAssembly, &Instance::EndUpdateRegisterAssembly,
        &Instance::MetricsKeeper, &Instance::MetricsSource, &Instance::Params, &Instance::ParamsVersion,
        &Instance::ParamsUpdate, &Instance::HasProtocolOutput, &Instance::OutputsMapBeginLock,
        &Instance::OutputsMapEndLock, &Instance::OutputsMap, &Instance::HasOutputsActionTarget,
        &Instance::OutputsActionTarget, &Instance::OutputsUpdate, &Instance::HasRegisterAssemblyActionTarget,
        &Instance::RegisterAssemblyActionTarget, &Instance::HasRegisterAssemblyGroup, &Instance::HasRegisterAssembly,
        &Instance::RegisterAssembly, &Instance::RegisterAssemblyList, &Instance::RegisterAssemblyBeginLock,
        &Instance::RegisterAssemblyEndLock, &Instance::RegisterAssemblyUpdate, &Instance::ResetInstance,
        &Instance::ActionTarget, &Instance::OnStartScan, &Instance::OnStopScan, &Instance::OnFactoryRestore,
        &Instance::GetProtocolStatus, &Instance::InitPersistDomain, &Instance::LoadPersistDomain,
        &Instance::SavePersistDomain));
}

TEST(VirtualSlots, OfTheManagerStandBehindThoseOfPersistence)
{
    using Manager = IControlManager;

    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &Manager::Component, &Manager::InitPersistDomain,
                             &Manager::LoadPersistDomain, &Manager::SavePersistDomain, &Manager::List,
                             &Manager::GetInstance, &Manager::AddPersistenceLoadEventHandler,
                             &Manager::RemovePersistenceLoadEventHandler));
}

TEST(VirtualSlots, OfWhatProtocolsCallKeepTheirPlaces)
{
    using Engine = IControlScanEngineInterface;
    using System = IControlSystemInterface;

    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &IControlActionTarget::ListActions,
                             &IControlActionTarget::GetActionParams, &IControlActionTarget::InvokeAction));
    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &IControlDataCache::SystemStats, &IControlDataCache::ScannerInfo));
    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &IControlResourceAdaptor::Read));
    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &Engine::SoftwareTrigger, &Engine::Alignment, &Engine::ClearAlignment,
                             &Engine::AlignmentCompletedEvent, &Engine::ScannerInfo, &Engine::FindSupportedSensor));
    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &System::Start, &System::Stop, &System::FactoryRestore,
                             &System::Restart, &System::LoadJob, &System::Stats, &System::SetNextIpConfig));
}

TEST(VirtualSlots, OfPluginsAndTheirActionsKeepTheirPlaces)
{
    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &ControlPlugin::Type, &ControlPlugin::GetObject));
    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &ProtocolOutputActionTarget::ListActions,
                             &ProtocolOutputActionTarget::GetActionParams, &ProtocolOutputActionTarget::InvokeAction));
}

TEST(VirtualSlots, OfResourcesStandBehindThoseOfTheirBase)
{
    // The base's own answer to an update, an operation of its second base, stands in this table too.
    constexpr uint64 BEHIND_BASE = 5 + SLOTS_OF_DESTRUCTOR + 1;

    EXPECT_TRUE(StandInOrder(BEHIND_BASE, &Protocol::ControlResourceBase::OnPersistenceLoadEvent));
}

TEST(VirtualSlots, OfInputsAndOutputsKeepTheirPlaces)
{
    using Manager = IControlHardwareManager;

    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &IControlHardware::HardwareIoType, &IControlHardware::IsEnabled,
                             &IControlHardware::Enable));
    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &Manager::SupportedHardwareInterfaces, &Manager::GetInterfaceCount,
                             &Manager::GetHardwareInterface));
}

TEST(VirtualSlots, OfResultsKeepTheirPlaces)
{
    using Results = IControlScanResults;
    using Dispatcher = IControlScanResultsDispatcher;

    // The fan-out has no virtual destructor: its table begins with the first operation.
    EXPECT_TRUE(StandInOrder(0, &Results::AddResultHandler, &Results::RemoveResultHandler, &Results::ProcessResultSet,
                             &Results::UpdateOutputMap, &Results::UpdateClientCount));
    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &Dispatcher::AddResultHandler, &Dispatcher::RemoveResultHandler,
                             &Dispatcher::AddResult, &Dispatcher::ResultHandlerCount, &Dispatcher::Start,
                             &Dispatcher::Stop, &Dispatcher::SetClientCount, &Dispatcher::GetClientCount));
}

TEST(VirtualSlots, OfTheHostKeepTheirPlaces)
{
    using Query = IDeploymentQuery;

    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &Query::IsPhysicalSensor, &Query::IsPhysicalBrackle,
                             &Query::IsVirtualSensor, &Query::IsVirtualBrackle, &Query::IsTavrinServiceApp));
    EXPECT_TRUE(
        StandInOrder(0, &IPersistRegistry::Register, &IPersistRegistry::Deregister, &IPersistRegistry::MarkModified));
    EXPECT_TRUE(StandInOrder(0, &IUpdateGate::BeginUpdate, &IUpdateGate::EndUpdate));
    EXPECT_TRUE(StandInOrder(0, &IControlFactory::Create));
}

} // namespace ZuControl
