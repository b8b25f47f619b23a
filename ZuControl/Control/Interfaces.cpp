// Constructors and destructors of the folder's interfaces, and the name of an action. They stand here and not in the headers so that this library
// exports them and the virtual tables: an interface without a virtual destructor has no other function that would.

#include "ZuControl/Control/ControlModuleEnviron.h"
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
#include "ZuControl/Control/IPreviewedActions.h"

namespace ZuControl
{

ControlActionInfo::ControlActionInfo(char const* idText, char const* displayNameText)
    : id(idText != nullptr ? idText : ""), displayName(displayNameText != nullptr ? displayNameText : "")
{
}

ControlActionInfo::ControlActionInfo(ControlActionInfo const&) = default;
ControlActionInfo::ControlActionInfo(ControlActionInfo&&) noexcept = default;
ControlActionInfo& ControlActionInfo::operator=(ControlActionInfo const&) = default;
ControlActionInfo& ControlActionInfo::operator=(ControlActionInfo&&) noexcept = default;
ControlActionInfo::~ControlActionInfo() = default;

std::string const& ControlActionInfo::Id() const
{
    return id;
}

std::string const& ControlActionInfo::DisplayName() const
{
    return displayName;
}

IControlActionTarget::IControlActionTarget() noexcept = default;
IControlActionTarget::~IControlActionTarget() = default;

IControlDataCache::IControlDataCache() noexcept = default;
IControlDataCache::~IControlDataCache() = default;

IControlFactory::IControlFactory() noexcept = default;
IControlFactory::~IControlFactory() = default;

IControlHardware::IControlHardware() noexcept = default;
IControlHardware::~IControlHardware() = default;

IControlHardwareManager::IControlHardwareManager() noexcept = default;
IControlHardwareManager::~IControlHardwareManager() = default;

IControlInstance::IControlInstance() noexcept = default;
IControlInstance::~IControlInstance() = default;

IControlManager::IControlManager() noexcept = default;
IControlManager::~IControlManager() = default;

IControlResourceAdaptor::IControlResourceAdaptor() noexcept = default;
IControlResourceAdaptor::~IControlResourceAdaptor() = default;

IControlScanEngineInterface::IControlScanEngineInterface() noexcept = default;
IControlScanEngineInterface::~IControlScanEngineInterface() = default;

IControlScanResults::IControlScanResults() noexcept = default;
IControlScanResults::~IControlScanResults() = default;

IControlScanResultsDispatcher::IControlScanResultsDispatcher() noexcept = default;
IControlScanResultsDispatcher::~IControlScanResultsDispatcher() = default;

IControlSystemInterface::IControlSystemInterface() noexcept = default;
IControlSystemInterface::~IControlSystemInterface() = default;

IDeploymentQuery::IDeploymentQuery() noexcept = default;
IDeploymentQuery::~IDeploymentQuery() = default;

IPersistRegistry::IPersistRegistry() noexcept = default;
IPersistRegistry::~IPersistRegistry() = default;

IUpdateGate::IUpdateGate() noexcept = default;
IUpdateGate::~IUpdateGate() = default;

IPreviewedActions::IPreviewedActions() noexcept = default;
IPreviewedActions::~IPreviewedActions() = default;

} // namespace ZuControl
