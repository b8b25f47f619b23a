#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace SparkplugMqtt
{

/// The names of an edge node and its device in topics.
struct NodeIds
{
    static constexpr std::size_t LONGEST_ID = 128; ///< bytes

    std::string group;
    std::string node;
    std::string device;

    bool operator==(NodeIds const&) const = default;
};

/// Whether `id` may be a group, node, device or host id: 1 to `NodeIds::LONGEST_ID` bytes of UTF-8 without control
/// characters and without '+', '#' and '/'.
bool IsValidId(std::string_view id);

/// The topics of an edge node with one device, in the namespace "spBv1.0".
struct Topics
{
    /// `ids` are valid. An empty `primaryHostId` means that the node waits for no host; `state` is then empty.
    Topics(NodeIds const& ids, std::string const& primaryHostId);

    std::string nodeBirth;
    std::string nodeDeath;
    std::string nodeCommand;
    std::string deviceBirth;
    std::string deviceData;
    std::string deviceDeath;
    std::string deviceCommand;
    std::string state;
};

} // namespace SparkplugMqtt
