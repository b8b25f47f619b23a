#pragma once

#include "ZuCommon/Persistence.h"
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
/// The document of the job domain holds enabled state, parameters, output map and register assemblies, by the keys of
/// the records themselves; the protocol defines the document of the protocol domain. A load first resets the instance,
/// then applies as much of the document as possible, and writes a log line for the user about each part that it could
/// not apply. The caller logs exceptions; the log lines before them say where the load or save has failed.
/// Threads: no state and no lock; the caller ensures that one thread at a time loads or saves an instance. The locks of
/// map and assemblies are held while they are saved; a load goes through the update gate.
class ZUCONTROL_INTERNAL_API PersistControl
{
public:
    /// Job domain: disables the instance, sets it to its defaults and writes nothing. Protocol domain: writes the
    /// initial document of the protocol, unless that is null, {} or []. Does nothing for any other domain.
    void Init(IControlInstance& instance, ZuCommon::PersistDomain domain, ZuCommon::IPersistStore& store);

    /// Does nothing when there is no document. Throws the JSON library's parse error, `Zu::Status::BAD_FORMAT` for a
    /// document of another form and `Zu::Status::UNSUPPORTED_VERSION` for another version; the instance is then
    /// unchanged. After that it throws the exceptions of the reset of the instance, the JSON library's type error for
    /// an enabled state that is no boolean, the exceptions of the start of the protocol, and at last
    /// `Zu::Status::FAILURE`, no text, when a part of the document was not applied. A failure in the parameters leaves
    /// outputs and assemblies at their defaults, one in the outputs the assemblies.
    void Load(IControlInstance& instance, ZuCommon::PersistDomain domain, ZuCommon::IPersistStore const& store);

    /// Writes the whole document. When it cannot be made, writes nothing and throws `Zu::Status::FAILURE` or the
    /// failing status, with a text. In the protocol domain null, {} and [] are not written, and the stored document
    /// stays.
    void Save(IControlInstance& instance, ZuCommon::PersistDomain domain, ZuCommon::IPersistStore& store);

    /// Version of the documents of the job domain. Versions are compared by text: there is no older and no newer.
    char const* Version() const;

private:
    void LoadControlInstance(bool keepEnabled, IControlInstance& instance, DocumentPart const& document) const;

    // A missing part is skipped and keeps its defaults. `settings` is the object "zu:control".
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
