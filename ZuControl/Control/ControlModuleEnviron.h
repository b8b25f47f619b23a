#pragma once

#include "ZuApi/Event.h"
#include "wApi/wTypes.h"

namespace ZuCommon
{
class PersistManager;
class ProblemsManager;
} // namespace ZuCommon

namespace ZuCore
{
class Core;
class ResultHub;
} // namespace ZuCore

namespace ZuRest
{
class RequestProcessor;
}

namespace ZuScan::Internal
{
class ScanEngineManager;
}

namespace ZuControl
{

class IDeploymentQuery;
class IPersistRegistry;
class IUpdateGate;

/// What the host gives to the module. The module keeps a copy of the record and owns nothing that it points to: all of it
/// outlives the module.
struct ControlModuleEnviron
{
    IDeploymentQuery* deployment = nullptr;                     ///< required
    void* allocator = nullptr;                                  ///< null is the default one
    IPersistRegistry* persistRegistry = nullptr;                ///< null: nothing is kept, no change is reported
    ZuCommon::ProblemsManager* problems = nullptr;              ///< required
    ZuCore::ResultHub* resultHub = nullptr;                     ///< null: no result arrives by itself
    IUpdateGate* updateGate = nullptr;                          ///< required
    ZuScan::Internal::ScanEngineManager* scanEngines = nullptr; ///< what needs a scanner fails without it
    Zu::Event<bool>* scanStartStopEvent = nullptr;              ///< true when a live scan starts; may be null
    Zu::Event<>* factoryRestoreEvent = nullptr;                 ///< may be null
    ZuCommon::PersistManager* persistManager = nullptr;         ///< jobs
    ZuCore::Core* core = nullptr;                               ///< start, stop, restart, restore, run state, metrics
    ZuRest::RequestProcessor* requestProcessor = nullptr;       ///< reads of other resources; they fail without it
    uint32 protocolOption = 0;                                  ///< handed to each protocol as it is
};

} // namespace ZuControl
