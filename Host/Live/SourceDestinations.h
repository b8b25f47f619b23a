#pragma once

#include <nlohmann/json.hpp>

#include <map>
#include <string>

namespace ZuHost
{

class SensorModule;

/// Finds out where the protocols send each data source, and what was delivered there last. Any thread may call.
class SourceDestinations final
{
public:
    /// By data source: a list of destinations.
    using Found = std::map<std::string, nlohmann::json>;

    /// The module outlives this; it is built when `Collect` is called.
    explicit SourceDestinations(SensorModule& usedModule);
    ~SourceDestinations();

    SourceDestinations(SourceDestinations const&) = delete;
    SourceDestinations& operator=(SourceDestinations const&) = delete;

    /// A protocol that does not tell its layouts has no destinations.
    Found Collect() const;

private:
    void AddProtocol(std::string const& typeName, Found& found) const;
    nlohmann::json DocumentAt(std::string const& path) const;

    SensorModule& module;
};

} // namespace ZuHost
