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

/// The services of the system for a protocol. One record serves all protocols of a module; the record and its objects
/// outlive them. The record owns none of the objects.
struct ControlProtocolEnviron
{
    ControlProtocolOperations* operations = nullptr;
    IControlResourceAdaptor* resourceAdaptor = nullptr;
    IControlDataCache* dataCache = nullptr;
    IControlHardwareManager* hardwareManager = nullptr;
    IDeploymentQuery* deployment = nullptr;
    ZuCommon::ProblemsManager* problems = nullptr;
    uint32 protocolOption = 0; ///< set by the host and passed on unchanged
    void* allocator = nullptr; ///< null is the default one
};

} // namespace ControlProtocol

} // namespace ZuControl
