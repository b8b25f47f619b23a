#pragma once

#include "ZuControl/Protocol/ControlResourceBase.h"
#include "ZuRest/IFormattedResource.h"
#include "ZuRest/IPreviewResource.h"

#include <functional>
#include <string>

namespace ZuControl::ControlProtocol
{
class LayoutCopy;
} // namespace ZuControl::ControlProtocol

namespace ZuControl::Protocol
{

class PreviewRun;

/// The base of the resources that foretell what commands would do. A client sends one command or a list of them; the
/// answer is 200 also for commands that would be refused. It has no document.
class ZUCONTROL_INTERNAL_API PreviewResourceBase : public ControlResourceBase, public ZuRest::IPreviewResource
{
public:
    explicit PreviewResourceBase(IControlManager& usedManager);
    ~PreviewResourceBase() override;

    ZuRest::IDocumentResource* DocumentProvider() override;
    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

    std::string SubjectPath(ZuRest::RequestInfo const& request) const override;
    std::function<ZuRest::Answer()> Preview(ZuRest::RequestInfo const& request, nlohmann::json const& body,
                                            std::string const& tag) override;

protected:
    /// The run on a copy of the present state; null for a class that cannot be copied.
    virtual std::unique_ptr<PreviewRun> MakeRun(ZuRest::RequestInfo const& request) = 0;
};

/// `/controls/:protocol/outputs/preview`.
class ZUCONTROL_INTERNAL_API ControlOutputsPreviewResource final : public PreviewResourceBase
{
public:
    explicit ControlOutputsPreviewResource(IControlManager& usedManager);
    ~ControlOutputsPreviewResource() override;

protected:
    std::unique_ptr<PreviewRun> MakeRun(ZuRest::RequestInfo const& request) override;
};

/// `/controls/:protocol/registerAssemblies/:registerAssembly/preview`.
class ZUCONTROL_INTERNAL_API ControlRegisterAssemblyPreviewResource final : public PreviewResourceBase
{
public:
    explicit ControlRegisterAssemblyPreviewResource(IControlManager& usedManager);
    ~ControlRegisterAssemblyPreviewResource() override;

protected:
    std::unique_ptr<PreviewRun> MakeRun(ZuRest::RequestInfo const& request) override;
};

/// `/controls/:protocol/plc`: the layouts that a PLC depends on, and their fingerprint; in other formats the files for
/// PLC programmers.
class ZUCONTROL_INTERNAL_API ControlPlcResource final : public ControlResourceBase, public ZuRest::IFormattedResource
{
public:
    explicit ControlPlcResource(IControlManager& usedManager);
    ~ControlPlcResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;
    ZuRest::Answer AnswerFormat(std::string const& format, ZuRest::RequestInfo const& request) override;
};

} // namespace ZuControl::Protocol
