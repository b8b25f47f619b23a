#pragma once

#include "ZuCommon/PersistDomain.h"
#include "ZuControl/Export.h"

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace ZuCommon
{
class IPersistStore;
}

namespace ZuControl
{

class DocumentPart;
class IControlInstance;

/// Moves one instance to and from its configuration document, "/controls/TYPE/config.json" in the store of a domain.
///
/// The document of the job domain holds enabled state, parameters, output map and register assemblies, by the keys of the
/// records themselves; that of the protocol domain is the protocol's own. A load first brings the instance to a known
/// state, then applies as much of the document as can be applied, and tells the user what could not be. Whoever calls
/// logs what is thrown; what stands in the log by then says where it went wrong.
/// Threads: no state and no lock; the caller sees to it that an instance is loaded or saved by one thread at a time. The
/// locks of map and assemblies are held while they are saved; a load goes through the update gate.
class ZUCONTROL_INTERNAL_API PersistControl
{
public:
    /// Job: the instance is disabled and set to its defaults, and nothing is written. Protocol: what the protocol begins
    /// with is written, unless that is null, {} or []. Any other domain: nothing.
    void Init(IControlInstance& instance, ZuCommon::PersistDomain domain, ZuCommon::IPersistStore& store);

    /// Does nothing when there is no document. Throws the JSON library's parse error, -984 for a document of another form
    /// and -989 for one of another version, all with the instance as it was; behind that, what the reset of the instance
    /// throws, the JSON library's type error for an enabled state that is no boolean, what the start of the protocol
    /// throws, and at last status 0, no text, when a part of the document was not applied.
    void Load(IControlInstance& instance, ZuCommon::PersistDomain domain, ZuCommon::IPersistStore const& store);

    /// Writes the document whole, or nothing when it cannot be made: status 0 or the failing status, with a text. In the
    /// protocol domain null, {} and [] are not written, and what was stored stays.
    void Save(IControlInstance& instance, ZuCommon::PersistDomain domain, ZuCommon::IPersistStore& store);

    /// Version of the documents of the job domain. Versions are compared by text: there is no older and no newer.
    char const* Version() const;

private:
    void LoadControlInstance(bool keepEnabled, IControlInstance& instance, DocumentPart const& document) const;

    // What is missing is passed over and stays as the reset left it. `settings` is the object "zu:control".
    static void LoadControlInstanceSettings(IControlInstance& instance, DocumentPart const& settings);
    static void LoadControlInstanceParams(IControlInstance& instance, DocumentPart const& settings);
    static void LoadControlInstanceOutputs(IControlInstance& instance, DocumentPart const& settings);
    static void LoadControlInstanceRegisterAssembly(IControlInstance& instance, DocumentPart const& settings);
    static void LoadOutputMapEntries(IControlInstance& instance, DocumentPart const& map);
    static void LoadRegisterAssemblyList(IControlInstance& instance, DocumentPart const& list);
    static void LoadRegisterAssemblyEntry(IControlInstance& instance, DocumentPart const& entry);
    static void LoadRegisterAssemblyBlocks(IControlInstance& instance, DocumentPart const& entry, char const* id);
    static bool ParametersVersionSupported(IControlInstance const& instance, DocumentPart const& settings);

    /// Empty when the entry does not name its assembly.
    static std::string RegisterAssemblyIdFromCfg(DocumentPart const& entry);

    nlohmann::json SaveControlInstance(IControlInstance& instance) const;
    static void SaveControlInstanceSettings(IControlInstance& instance, nlohmann::json& settings);
    static void SaveControlInstanceParams(IControlInstance& instance, nlohmann::json& settings);
    static void SaveControlInstanceOutputs(IControlInstance& instance, nlohmann::json& settings);
    static void SaveControlInstanceRegisterAssembly(IControlInstance& instance, nlohmann::json& settings);

    void ValidateCfgFileVersion(IControlInstance const& instance, char const* version) const;
    static void ValidateFileFormat(IControlInstance const& instance, DocumentPart const& document);
};

} // namespace ZuControl
