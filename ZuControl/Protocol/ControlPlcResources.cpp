#include "ZuControl/Protocol/ControlPlcResources.h"

#include "ZuApi/Exception.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuControl/Control/IPreviewedActions.h"
#include "ZuControl/ControlProtocol/Fingerprint.h"
#include "ZuControl/ControlProtocol/LayoutCopy.h"
#include "ZuControl/ControlProtocol/ProtocolOutputActionTarget.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyActionTarget.h"
#include "ZuControl/Plc/PlcFormats.h"
#include "ZuControl/Plc/PlcTags.h"
#include "ZuControl/Protocol/ControlOutputsResource.h"
#include "ZuControl/Protocol/ControlRegisterAssemblyResource.h"
#include "ZuControl/Protocol/PreviewRun.h"
#include "ZuRest/Answer.h"
#include "ZuRest/Path.h"
#include "ZuRest/Problem.h"
#include "ZuRest/RequestInfo.h"

#include <nlohmann/json.hpp>

#include <typeinfo>
#include <utility>

namespace ZuControl::Protocol
{

using ControlProtocol::Layout;
using ControlProtocol::LayoutEntry;
using ControlProtocol::ProtocolOutputActionTarget;
using ControlProtocol::ProtocolRegisterAssemblyActionTarget;

namespace
{

/// A copy of what the actions of `target` change. Null unless the target is a `Target`, or derives from it and declares
/// that its actions do the same.
template <typename Target>
std::unique_ptr<ControlProtocol::LayoutCopy> CopyFor(IControlActionTarget const& target)
{
    bool const isKnown = typeid(target) == typeid(Target) || dynamic_cast<IPreviewedActions const*>(&target) != nullptr;
    auto const* const ours = dynamic_cast<Target const*>(&target);
    return isKnown && ours != nullptr ? ours->CopyForPreview() : nullptr;
}

/// The layouts for the fingerprint, without that of the previewed part; none where a map of another class makes it
/// impossible.
std::vector<Layout> LayoutsForFingerprint(IControlInstance& instance, Layout::Kind kind, std::string const& id)
{
    Layout previewed;
    previewed.kind = kind;
    previewed.id = id;
    try
    {
        return LayoutsOf(instance, &previewed);
    }
    catch (Zu::Exception const& exception)
    {
        if (exception.Status() != Zu::Status::NOT_SUPPORTED)
        {
            throw;
        }
        return {};
    }
}

nlohmann::json ToJson(LayoutEntry const& entry)
{
    return {{"textId", entry.textId},           {"outputId", entry.outputId},
            {"registers", entry.registers},     {"bytesPerRegister", entry.bytesPerRegister},
            {"isBigEndian", entry.isBigEndian}, {"areBytesSwapped", entry.areBytesSwapped},
            {"outputSize", entry.outputSize},   {"dataOffset", entry.dataOffset},
            {"dataLength", entry.dataLength},   {"type", entry.type},
            {"source", entry.source},           {"scannerId", entry.scannerId},
            {"displayName", entry.displayName}};
}

nlohmann::json ToJson(Layout const& layout)
{
    nlohmann::json entries = nlohmann::json::array();
    for (LayoutEntry const* const entry : ControlProtocol::Fingerprint::InOrder(layout))
    {
        entries.push_back(ToJson(*entry));
    }
    return {{"kind", static_cast<uint32>(layout.kind)},
            {"id", layout.id},
            {"isAddressed", layout.isAddressed},
            {"itemSize", layout.itemSize},
            {"entries", std::move(entries)}};
}

/// The tags of a service, with the fingerprint of the layout that they belong to. Throws `Zu::Status::BUSY` if the
/// protocol itself changes the layout again and again.
Plc::PlcTagList TagsWithFingerprint(IControlInstance& instance)
{
    constexpr int MOST_ATTEMPTS = 10;
    for (int attempt = 0; attempt < MOST_ATTEMPTS; ++attempt)
    {
        Plc::PlcTagList list = Plc::ReadTags(instance); // first: its refusals have a text
        list.fingerprint = ControlProtocol::Fingerprint::Of(LayoutsOf(instance));
        list.fingerprintVersion = ControlProtocol::Fingerprint::VERSION;
        Plc::PlcTagList const again = Plc::ReadTags(instance);
        if (again.tags == list.tags)
        {
            return list;
        }
    }
    ZU_THROW(Zu::Status::BUSY, "The map is being changed.");
}

/// "csv, json and shell".
std::string NamesOfFormats()
{
    auto const formats = Plc::PlcFormats();
    std::string names;
    for (std::size_t i = 0; i < formats.size(); ++i)
    {
        names += i == 0 ? "" : i + 1 == formats.size() ? " and " : ", ";
        names += formats[i].name;
    }
    return names;
}

ZuRest::Answer RefuseFormat(std::string const& detail)
{
    return ZuRest::Problem{ZuRest::HttpStatus::NOT_ACCEPTABLE, detail, Zu::Status::NOT_SUPPORTED, {}}.ToAnswer();
}

} // namespace

PreviewResourceBase::PreviewResourceBase(IControlManager& usedManager) : ControlResourceBase(usedManager)
{
}

PreviewResourceBase::~PreviewResourceBase()
{
    EndCallbacks();
}

ZuRest::IDocumentResource* PreviewResourceBase::DocumentProvider()
{
    return nullptr;
}

nlohmann::json PreviewResourceBase::Document(ZuRest::RequestInfo const& /*request*/, ZuRest::ResponseInfo& /*response*/)
{
    ZU_THROW(Zu::Status::NOT_SUPPORTED);
}

std::string PreviewResourceBase::SubjectPath(ZuRest::RequestInfo const& request) const
{
    return request.path.substr(0, request.path.rfind('/'));
}

std::function<ZuRest::Answer()> PreviewResourceBase::Preview(ZuRest::RequestInfo const& request,
                                                             nlohmann::json const& body, std::string const& tag)
{
    std::vector<PreviewStep> steps = StepsOf(body);
    std::shared_ptr<PreviewRun> run = MakeRun(request);
    if (run == nullptr)
    {
        ZuRest::Problem const problem{ZuRest::HttpStatus::NOT_IMPLEMENTED,
                                      "The commands at " + SubjectPath(request) + " have no preview.",
                                      Zu::Status::NOT_SUPPORTED,
                                      {}};
        return [problem] { return problem.ToAnswer(); };
    }
    return [steps = std::move(steps), run = std::move(run), tag] {
        return ZuRest::Answer{ZuRest::HttpStatus::OK, "application/json", run->Answer(steps, tag), {}};
    };
}

ControlOutputsPreviewResource::ControlOutputsPreviewResource(IControlManager& usedManager)
    : PreviewResourceBase(usedManager)
{
}

ControlOutputsPreviewResource::~ControlOutputsPreviewResource()
{
    EndCallbacks();
}

std::unique_ptr<PreviewRun> ControlOutputsPreviewResource::MakeRun(ZuRest::RequestInfo const& request)
{
    IControlInstance& instance = ResolveToInstance(RequireKey(request, "protocol", "Request is missing service name"));
    IControlActionTarget const& target = ControlOutputsActionResource::ActionTarget(instance);
    auto copy = CopyFor<ProtocolOutputActionTarget>(target);
    if (copy == nullptr)
    {
        return nullptr;
    }
    PreviewRun::Manners manners{.commandsPath = SubjectPath(request) + "/commands",
                                .rethrow = &ControlOutputsActionResource::RethrowRefusal,
                                .check = dynamic_cast<IPreviewedActions const*>(&target),
                                .hidesAddAll = true};
    return std::make_unique<PreviewRun>(std::move(copy), std::move(manners),
                                        LayoutsForFingerprint(instance, Layout::Kind::TEXTS, "")); // a map of any kind
}

ControlRegisterAssemblyPreviewResource::ControlRegisterAssemblyPreviewResource(IControlManager& usedManager)
    : PreviewResourceBase(usedManager)
{
}

ControlRegisterAssemblyPreviewResource::~ControlRegisterAssemblyPreviewResource()
{
    EndCallbacks();
}

std::unique_ptr<PreviewRun> ControlRegisterAssemblyPreviewResource::MakeRun(ZuRest::RequestInfo const& request)
{
    IControlInstance& instance = ResolveToInstance(RequireKey(request, "protocol", "Request is missing service name"));
    std::string const& id = RequireKey(request, "registerAssembly", "Request is missing assembly id");
    IControlActionTarget const& target = ControlRegisterAssemblyActionResource::ActionTarget(instance, id);
    auto copy = CopyFor<ProtocolRegisterAssemblyActionTarget>(target);
    if (copy == nullptr)
    {
        return nullptr;
    }
    PreviewRun::Manners manners{.commandsPath = SubjectPath(request) + "/commands",
                                .rethrow = &ControlRegisterAssemblyActionResource::RethrowRefusal,
                                .check = dynamic_cast<IPreviewedActions const*>(&target)};
    return std::make_unique<PreviewRun>(std::move(copy), std::move(manners),
                                        LayoutsForFingerprint(instance, Layout::Kind::BLOCKS, id));
}

ControlPlcResource::ControlPlcResource(IControlManager& usedManager) : ControlResourceBase(usedManager)
{
}

ControlPlcResource::~ControlPlcResource()
{
    EndCallbacks();
}

nlohmann::json ControlPlcResource::Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& /*response*/)
{
    std::vector<Layout> const layouts = LayoutsOf(ResolveToInstance(RequireKey(request, "protocol")));
    nlohmann::json document{{"fingerprint", ControlProtocol::Fingerprint::Of(layouts)},
                            {"fingerprintVersion", ControlProtocol::Fingerprint::VERSION},
                            {"layouts", nlohmann::json::array()}};
    for (Layout const& layout : layouts)
    {
        document["layouts"].push_back(ToJson(layout));
    }
    return document;
}

ZuRest::Answer ControlPlcResource::AnswerFormat(std::string const& format, ZuRest::RequestInfo const& request)
{
    IControlInstance& instance = ResolveToInstance(RequireKey(request, "protocol"));
    Plc::PlcFormat const* const chosen = Plc::FindPlcFormat(format);
    if (chosen == nullptr)
    {
        return RefuseFormat("There is no format \"" + format + "\". The formats are " + NamesOfFormats() + ".");
    }
    Plc::PlcTagList const list = TagsWithFingerprint(instance);
    if (chosen->needsWords && list.bytesPerRegister != 2)
    {
        return RefuseFormat("The format " + format + " is for services with registers of two bytes.");
    }
    return {ZuRest::HttpStatus::OK,
            chosen->contentType,
            chosen->write(list),
            {{"Content-Disposition", "attachment; filename=\"" + list.service + '.' + chosen->fileEnding + '"'}}};
}

} // namespace ZuControl::Protocol
