#pragma once

#include <memory>

namespace ZuCommon
{
class ProblemsManager;
}

namespace ZuControl
{

class ControlInfo;
class IControlScanResults;
class IUpdateGate;

namespace ControlProtocol
{
class IProtocol;
}

/// The arguments of the constructor of ControlInstance. All pointers are set; all but `protocol` are not owned and
/// outlive the instance.
struct ControlInstanceParams
{
    ControlInfo const* info = nullptr;
    IUpdateGate* updateGate = nullptr;
    IControlScanResults* scanResults = nullptr;
    ZuCommon::ProblemsManager* problems = nullptr;
    std::shared_ptr<ControlProtocol::IProtocol> protocol;
};

} // namespace ZuControl
