#include "Support/VirtualSlot.h"
#include "ZuCommon/Metrics.h"
#include "ZuCommon/Persistence.h"
#include "ZuPlugin/IPlugin.h"
#include "ZuRest/ICallableResource.h"
#include "ZuRest/IDocumentResource.h"
#include "ZuRest/IResource.h"
#include "ZuRest/IStreamReceiver.h"
#include "ZuRest/IStreamableResource.h"
#include "ZuScan/Sensor.h"

#include <gtest/gtest.h>

#include <string>

using ZuTest::SLOTS_OF_DESTRUCTOR;
using ZuTest::StandInOrder;

TEST(VirtualSlots, OfPersistenceKeepTheirPlaces)
{
    using ZuCommon::IPersistHandler;
    using ZuCommon::IPersistStore;

    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &IPersistHandler::Component, &IPersistHandler::InitPersistDomain,
                             &IPersistHandler::LoadPersistDomain, &IPersistHandler::SavePersistDomain));
    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &IPersistStore::Read, &IPersistStore::Write, &IPersistStore::Exists));
}

TEST(VirtualSlots, OfMetricsKeepTheirPlaces)
{
    using ZuCommon::IMetricsKeeper;
    using Reporter = ZuCommon::IMetricsReporter<std::string const&>;

    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &IMetricsKeeper::UpdateMetrics, &IMetricsKeeper::ResetMetrics));
    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &ZuCommon::IMetricsSource::GetMetrics));
    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &Reporter::LastReport, &Reporter::AddReportHandler,
                             &Reporter::RemoveReportHandler));
}

TEST(VirtualSlots, OfPluginsKeepTheirPlaces)
{
    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &ZuPlugin::IPlugin::Type, &ZuPlugin::IPlugin::GetObject));
}

TEST(VirtualSlots, OfActionsOfTheScanEngineKeepTheirPlaces)
{
    using ZuScan::IActionTarget;
    using ZuScan::ICommandTarget;

    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &IActionTarget::ListActions, &IActionTarget::GetActionParams,
                             &IActionTarget::InvokeAction));
    EXPECT_TRUE(StandInOrder(SLOTS_OF_DESTRUCTOR, &ICommandTarget::ListActions, &ICommandTarget::GetActionParams,
                             &ICommandTarget::InvokeAction));
}

TEST(VirtualSlots, OfResourcesComeAheadOfTheDestructor)
{
    using ZuRest::IDocumentResource;
    using ZuRest::IResource;
    using ZuRest::IStreamableResource;

    EXPECT_TRUE(StandInOrder(0, &IResource::NotificationEvent, &IResource::ParentProvider, &IResource::DocumentProvider,
                             &IResource::CallableProvider, &IResource::StreamableProvider));
    EXPECT_TRUE(StandInOrder(0, &IDocumentResource::Document, &IDocumentResource::UpdateDocument));
    EXPECT_TRUE(StandInOrder(0, &ZuRest::ICallableResource::Invoke));
    EXPECT_TRUE(StandInOrder(0, &IStreamableResource::StartStream, &IStreamableResource::StopStream,
                             &IStreamableResource::StartEvent));
    EXPECT_TRUE(StandInOrder(0, &ZuRest::IStreamReceiver::Receive));
}
