#pragma once

#include "wApi/wTypes.h"

namespace ZuCommon
{
class ProblemsManager;
}

namespace ZuControl
{

class ControlProtocolOperations;
class IControlDataCache;
class IControlHardwareManager;
class IControlResourceAdaptor;
class IDeploymentQuery;

namespace ControlProtocol
{

/// How a protocol reaches the system. One record serves all protocols of a module and outlives them; it owns nothing.
struct ControlProtocolEnviron
{
    ControlProtocolOperations* operations = nullptr;
    IControlResourceAdaptor* resourceAdaptor = nullptr;
    IControlDataCache* dataCache = nullptr;
    IControlHardwareManager* hardwareManager = nullptr;
    IDeploymentQuery* deployment = nullptr;
    ZuCommon::ProblemsManager* problems = nullptr;
    uint32 protocolOption = 0; ///< the host's, handed on as it is
    void* allocator = nullptr; ///< null is the default one
};

} // namespace ControlProtocol

} // namespace ZuControl
