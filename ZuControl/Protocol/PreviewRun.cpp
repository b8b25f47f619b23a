#include "ZuControl/Protocol/PreviewRun.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/JsonTextWriter.h"
#include "ZuApi/Params/Group.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuControl/Control/IPreviewedActions.h"
#include "ZuControl/ControlProtocol/BlockOrder.h"
#include "ZuControl/ControlProtocol/Fingerprint.h"
#include "ZuControl/ControlProtocol/ProtocolOutputActionTarget.h"
#include "ZuControl/Protocol/LayoutDifference.h"
#include "ZuRest/JsonText.h"
#include "ZuRest/Problem.h"

#include <nlohmann/json.hpp>

#include <utility>

namespace ZuControl::Protocol
{

using ControlProtocol::EntryRefusal;
using ControlProtocol::Layout;
using ControlProtocol::LayoutCopy;
using ControlProtocol::LayoutEntry;
using Json = nlohmann::json;
using Writer = Zu::Properties::JsonTextWriter;

namespace
{

constexpr uint32 NOWHERE = LayoutDifference::NOWHERE;

/// Whether both are layouts of the same assembly, or of the output map.
bool IsSamePart(Layout const& left, Layout const& right)
{
    bool const isBlocks = left.kind == Layout::Kind::BLOCKS;
    return left.id == right.id && isBlocks == (right.kind == Layout::Kind::BLOCKS);
}

/// Holds the lock of a service's output map.
class OutputsLock final
{
public:
    explicit OutputsLock(IControlInstance& lockedInstance) : instance(lockedInstance)
    {
        instance.OutputsMapBeginLock();
    }

    ~OutputsLock()
    {
        ZU_GUARD_DESTRUCTOR([this] { instance.OutputsMapEndLock(); });
    }

    OutputsLock(OutputsLock const&) = delete;
    OutputsLock& operator=(OutputsLock const&) = delete;

private:
    IControlInstance& instance;
};

PreviewStep StepOf(Json const& body)
{
    if (!body.is_object() || !body.contains("command") || !body.at("command").is_string())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "A preview takes an object with the member \"command\", or a list of them.");
    }
    return {body.at("command").get<std::string>(),
            std::make_shared<Json const>(body.contains("arguments") ? body.at("arguments") : Json::object())};
}

void WriteNumber(Writer& writer, char const* key, uint32 value)
{
    writer.NextMember(key);
    writer.WriteUint32(value);
}

void WriteText(Writer& writer, char const* key, std::string const& value)
{
    writer.NextMember(key);
    writer.WriteText(value);
}

void WriteTextUnlessEmpty(Writer& writer, char const* key, std::string const& value)
{
    if (!value.empty())
    {
        WriteText(writer, key, value);
    }
}

void WriteId(Writer& writer, char const* key, Layout const& layout, LayoutEntry const& entry)
{
    if (layout.kind == Layout::Kind::TEXTS)
    {
        WriteText(writer, key, entry.textId);
    }
    else
    {
        WriteNumber(writer, key, entry.outputId);
    }
}

/// What names an entry for a person.
void WriteNames(Writer& writer, LayoutEntry const& entry)
{
    WriteTextUnlessEmpty(writer, "type", entry.type);
    WriteTextUnlessEmpty(writer, "displayName", entry.displayName);
    WriteTextUnlessEmpty(writer, "source", entry.source);
}

/// Writes a list under `key`; `writeMembers` writes the members of the object of each element.
template <typename List, typename WriteMembers>
void WriteObjects(Writer& writer, char const* key, List const& list, WriteMembers const& writeMembers)
{
    writer.NextMember(key);
    writer.BeginArray();
    for (auto const& element : list)
    {
        writer.NextElement();
        writer.BeginObject();
        writeMembers(element);
        writer.EndObject();
    }
    writer.EndArray();
}

void WriteEntries(Writer& writer, char const* key, Layout const& layout, std::vector<uint32> const& entries)
{
    WriteObjects(writer, key, entries, [&](uint32 index) {
        LayoutEntry const& entry = layout.entries[index];
        WriteId(writer, "outputId", layout, entry);
        WriteNumber(writer, "registers", entry.registers);
        WriteNames(writer, entry);
    });
}

char const* OrderOf(LayoutEntry const& entry)
{
    return ControlProtocol::NameOf({entry.isBigEndian, entry.areBytesSwapped});
}

/// Writes the two values of a text that has changed.
void WriteChange(Writer& writer, char const* key, std::string const& from, std::string const& to)
{
    if (from == to)
    {
        return;
    }
    writer.NextMember(key);
    writer.BeginObject();
    WriteText(writer, "from", from);
    WriteText(writer, "to", to);
    writer.EndObject();
}

/// Writes what stands at a run of addresses: null, or the id of the entry and the offset of the first of its registers
/// here. The lists of entries name it.
void WritePlace(Writer& writer, char const* key, Layout const& layout, uint32 index, uint32 address)
{
    writer.NextMember(key);
    if (index == NOWHERE)
    {
        writer.WriteJson("null");
        return;
    }
    LayoutEntry const& entry = layout.entries[index];
    writer.BeginObject();
    WriteNumber(writer, "outputId", entry.outputId);
    WriteNumber(writer, "offset", address - entry.outputId);
    writer.EndObject();
}

void WriteUse(Writer& writer, LayoutDifference::Use const& use, std::size_t entries)
{
    WriteObjects(writer, "gaps", use.gaps, [&](LayoutDifference::Range const& gap) {
        WriteNumber(writer, "address", gap.address);
        WriteNumber(writer, "count", gap.count);
    });
    writer.NextMember("use");
    writer.BeginObject();
    WriteNumber(writer, "entries", static_cast<uint32>(entries));
    WriteNumber(writer, "addresses", use.used);
    WriteNumber(writer, "of", use.all);
    writer.EndObject();
    writer.NextMember("firstFree");
    use.firstFree.has_value() ? writer.WriteUint32(*use.firstFree) : writer.WriteJson("null");
}

void WriteDifference(Writer& writer, Layout const& before, Layout const& after)
{
    LayoutDifference const difference(before, after);
    WriteEntries(writer, "added", after, difference.added);
    WriteEntries(writer, "removed", before, difference.removed);
    WriteObjects(writer, "moved", difference.moved, [&](LayoutDifference::Pair const& pair) {
        WriteId(writer, "from", before, before.entries[pair.before]);
        WriteId(writer, "to", after, after.entries[pair.after]);
        WriteNumber(writer, "registers", after.entries[pair.after].registers);
        WriteNames(writer, after.entries[pair.after]);
    });
    WriteObjects(writer, "renamed", difference.changed, [&](LayoutDifference::Pair const& pair) {
        LayoutEntry const& old = before.entries[pair.before];
        LayoutEntry const& now = after.entries[pair.after];
        WriteId(writer, "outputId", after, now);
        WriteChange(writer, "displayName", old.displayName, now.displayName);
        WriteChange(writer, "source", old.source, now.source);
        WriteChange(writer, "scannerId", old.scannerId, now.scannerId);
        WriteChange(writer, "order", OrderOf(old), OrderOf(now));
    });
    WriteObjects(writer, "addresses", difference.runs, [&](LayoutDifference::Run const& run) {
        WriteNumber(writer, "address", run.address);
        WriteNumber(writer, "count", run.count);
        WritePlace(writer, "before", before, run.before, run.address);
        WritePlace(writer, "after", after, run.after, run.address);
    });
    WriteUse(writer, difference.use, after.entries.size());
}

} // namespace

std::vector<PreviewStep> StepsOf(Json const& body)
{
    if (!body.is_array())
    {
        return {StepOf(body)};
    }
    if (body.size() > MOST_STEPS)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "A preview takes at most %u commands.", static_cast<unsigned>(MOST_STEPS));
    }
    std::vector<PreviewStep> steps;
    for (Json const& one : body)
    {
        steps.push_back(StepOf(one));
    }
    return steps;
}

std::vector<Layout> LayoutsOf(IControlInstance& instance, Layout const* omitted)
{
    std::vector<Layout> layouts;
    auto const add = [&layouts, omitted](Layout::Kind kind, std::string const& id, auto const& read) {
        Layout part;
        part.kind = kind;
        part.id = id;
        bool const isOmitted = omitted != nullptr && IsSamePart(part, *omitted);
        layouts.push_back(isOmitted ? std::move(part) : read());
    };
    if (instance.HasRegisterAssemblyGroup())
    {
        for (std::string const& id : instance.RegisterAssemblyList())
        {
            add(Layout::Kind::BLOCKS, id,
                [&] { return ControlProtocol::ReadLayout(instance.RegisterAssembly(id.c_str())); });
        }
    }
    if (instance.HasProtocolOutput())
    {
        add(Layout::Kind::TEXTS, "", [&] {
            OutputsLock const lock(instance);
            return ControlProtocol::ReadLayout(instance.OutputsMap());
        });
    }
    if (layouts.empty())
    {
        ZU_THROW(Zu::Status::NOT_SUPPORTED);
    }
    return layouts;
}

PreviewRun::PreviewRun(std::unique_ptr<LayoutCopy> newCopy, Manners newManners, std::vector<Layout> newServiceLayouts)
    : copy(std::move(newCopy)), manners(std::move(newManners)), serviceLayouts(std::move(newServiceLayouts))
{
}

PreviewRun::~PreviewRun() = default;

std::string PreviewRun::Answer(std::vector<PreviewStep> const& steps, std::string const& tag)
{
    Layout const before = copy->Read();
    std::vector<Result> results;
    for (PreviewStep const& step : steps)
    {
        results.push_back(Run(step));
        if (results.back().problem.has_value())
        {
            break;
        }
    }
    Layout after = copy->Read();

    Writer writer;
    writer.BeginObject();
    WriteText(writer, "etag", tag);
    WriteObjects(writer, "commands", results, [&](Result const& result) {
        WriteText(writer, "command", result.command);
        WriteObjects(writer, "refusedEntries", result.refusedEntries, [&](EntryRefusal const& refusal) {
            WriteNumber(writer, "entry", static_cast<uint32>(refusal.entry));
            writer.NextMember("code");
            writer.WriteInt32(refusal.status);
            WriteText(writer, "text", refusal.text);
        });
    });
    writer.NextMember("refused");
    writer.WriteJson(results.empty() ? "null" : results.back().problem.value_or("null"));
    WriteDifference(writer, before, after);
    writer.NextMember("fingerprint");
    std::optional<uint32> const fingerprint = FingerprintWith(std::move(after));
    fingerprint.has_value() ? writer.WriteUint32(*fingerprint) : writer.WriteJson("null");
    writer.EndObject();
    return writer.Take();
}

PreviewRun::Result PreviewRun::Run(PreviewStep const& step)
{
    Result result{step.command, {}, std::nullopt};
    try
    {
        std::shared_ptr<Zu::Params::Group> const params = copy->ActionParams(step.command);
        Zu::Properties::JsonSerializer::Deserialize(*params, *step.arguments);
        Invoke(step.command, *params);
    }
    catch (...)
    {
        auto const problem = ZuRest::Problem::OfCaught("POST", manners.commandsPath + "/" + step.command);
        result.problem = ZuRest::JsonText::Write(problem.ToJson());
    }
    result.refusedEntries = copy->TakeRefusals();
    return result;
}

void PreviewRun::Invoke(std::string const& command, Zu::Params::Group const& params)
{
    try
    {
        if (manners.check != nullptr)
        {
            manners.check->CheckArguments(params);
        }
        copy->InvokeAction(command, params);
    }
    catch (...)
    {
        bool const isHidden = manners.hidesAddAll &&
                              command == ControlProtocol::ProtocolOutputActionTarget::PROTOCOL_OUTPUT_ACTION_ID_ADD_ALL;
        if (!isHidden)
        {
            manners.rethrow();
        }
    }
}

/// The fingerprint of the service when the copy replaces its original.
std::optional<uint32> PreviewRun::FingerprintWith(Layout after)
{
    if (serviceLayouts.empty())
    {
        return std::nullopt;
    }
    for (Layout& layout : serviceLayouts)
    {
        if (IsSamePart(layout, after))
        {
            layout = std::move(after);
            break;
        }
    }
    return ControlProtocol::Fingerprint::Of(serviceLayouts);
}

} // namespace ZuControl::Protocol
