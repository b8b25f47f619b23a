#pragma once

#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <memory>

namespace ZuCommon
{
class ProblemsManager;
} // namespace ZuCommon

namespace ZuControl
{

class ControlProtocolOperations;
class IControlDataCache;
class IControlHardwareManager;
class IControlResourceAdaptor;
class IDeploymentQuery;

namespace ControlProtocol
{

class IProtocol;

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

/// Makes protocols of one type. Plug-ins implement it and keep their factories alive for as long as they are loaded.
///
/// The module calls the factory in its constructor, on the thread that builds it (in the host, the main thread): once
/// for each type that the system supports, in the order of the type names.
class ZUCONTROL_API IControlFactory
{
public:
    /// A new protocol, not started, which the instance shares. `environ` outlives the protocol. The construction of the
    /// module waits for this call: it must not block. An empty pointer or an exception is logged and ends the
    /// construction of the whole module. The sensor's inputs and outputs are not known yet: the hardware manager of
    /// `environ` has no objects.
    virtual std::shared_ptr<ControlProtocol::IProtocol>
    Create(ControlProtocol::ControlProtocolEnviron const& environ) = 0;

protected:
    IControlFactory() noexcept;
    ~IControlFactory(); // not virtual: the first slot is the creating operation
};

} // namespace ZuControl
