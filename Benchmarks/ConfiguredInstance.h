#pragma once

#include "ZuCommon/Persistence.h"
#include "ZuCommon/Problems.h"
#include "ZuControl/Control/ControlInfo.h"
#include "ZuControl/Control/ControlInstance.h"
#include "ZuControl/Control/ControlModuleEnviron.h"
#include "ZuControl/Control/ControlProtocolOperations.h"
#include "ZuControl/Control/ControlScanEngineInterface.h"
#include "ZuControl/Control/ControlScanResults.h"
#include "ZuControl/Control/ControlSystemInterface.h"

#include <nlohmann/json_fwd.hpp>

#include <memory>
#include <string>
#include <vector>

namespace ZuBench
{

/// The kind of output map or the register assembly that holds the entries of a configuration.
enum class EntryKind
{
    REGISTER_MAP,
    STANDARD_MAP,
    TEXT_ID_MAP,
    BLOCKS
};

/// The entries of a configuration as a program without parameter records would keep them.
class PlainEntries final
{
public:
    PlainEntries(EntryKind newKind, unsigned count);

    /// The configuration document with these entries.
    nlohmann::json Document() const;

private:
    struct Entry
    {
        uint16 id;
        uint16 size;
        uint32 offset;
        uint32 length;
        std::string textId;
        std::string source;
    };

    nlohmann::json Outputs() const;
    nlohmann::json Assembly() const;

    EntryKind const kind;
    std::vector<Entry> entries;
};

/// A store of one document.
class MemoryStore final : public ZuCommon::IPersistStore
{
public:
    std::string Read(std::string const& path) const override;
    void Write(std::string const& path, void const* data, std::size_t size) override;
    bool Exists(std::string const& path) const override;

    std::string bytes;
};

class ConfiguredProtocol;

/// An instance of a protocol with the map or the assembly of one `EntryKind`, and nothing else to configure.
class ConfiguredInstance final
{
public:
    explicit ConfiguredInstance(EntryKind kind);
    ~ConfiguredInstance();

    ConfiguredInstance(ConfiguredInstance const&) = delete;
    ConfiguredInstance& operator=(ConfiguredInstance const&) = delete;

    ZuControl::IControlInstance& Instance();

    /// The number of entries.
    std::size_t Count();
    void Clear();

private:
    class Host final : public ZuControl::IUpdateGate, public ZuControl::IDeploymentQuery
    {
    public:
        void BeginUpdate(bool exclusive) override;
        void EndUpdate() override;
        bool IsPhysicalSensor() override;
        bool IsPhysicalBrackle() override;
        bool IsVirtualSensor() override;
        bool IsVirtualBrackle() override;
        bool IsTavrinServiceApp() override;
    };

    Host host;
    ZuControl::ControlSystemInterface system{nullptr, nullptr};
    ZuControl::ControlScanEngineInterface engine{nullptr};
    ZuControl::ControlProtocolOperations operations{system, engine};
    ZuControl::ControlScanResults scanResults{nullptr, nullptr};
    ZuCommon::ProblemsManager problems;
    ZuControl::ControlInfo info;
    std::shared_ptr<ConfiguredProtocol> protocol;
    std::unique_ptr<ZuControl::ControlInstance> instance;
};

} // namespace ZuBench
