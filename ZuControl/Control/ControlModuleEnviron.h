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

/// The objects of the host that the module uses. The module keeps a copy of the record and owns none of the objects:
/// they all outlive the module.
struct ControlModuleEnviron
{
    IDeploymentQuery* deployment = nullptr;                     ///< required
    void* allocator = nullptr;                                  ///< null is the default one
    IPersistRegistry* persistRegistry = nullptr;                ///< null: nothing is stored, no change is reported
    ZuCommon::ProblemsManager* problems = nullptr;              ///< required
    ZuCore::ResultHub* resultHub = nullptr;                     ///< null: results come only by direct calls
    IUpdateGate* updateGate = nullptr;                          ///< required
    ZuScan::Internal::ScanEngineManager* scanEngines = nullptr; ///< null: operations on scanners throw
    Zu::Event<bool>* scanStartStopEvent = nullptr;              ///< true when a live scan starts; may be null
    Zu::Event<>* factoryRestoreEvent = nullptr;                 ///< may be null
    ZuCommon::PersistManager* persistManager = nullptr;         ///< loads jobs; null: operations on jobs throw
    ZuCore::Core* core = nullptr;                               ///< start, stop, restart, restore, run state, metrics
    ZuRest::RequestProcessor* requestProcessor = nullptr;       ///< reads other resources; null: reads throw
    uint32 protocolOption = 0;                                  ///< passed to each protocol unchanged
};

} // namespace ZuControl
