#pragma once

#include "ZuCommon/Role.h"

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace PluginCommon
{

/// The roles of the texts in client certificates: "Viewer", "Operator", "Engineer", "Administrator", and those of a table
/// such as "Maintenance=engineer, SCADA=viewer".
class RoleTable final
{
public:
    static constexpr std::size_t MOST_ENTRIES = 64;

    /// Throws `Zu::Status::BAD_ARGUMENT` with a text that names the faulty entry.
    explicit RoleTable(std::string_view table);
    ~RoleTable();

    /// NONE for a text that is not known. Capitals and small letters differ.
    ZuCommon::Role RoleOf(std::string_view certified) const;

private:
    void Add(std::string_view entry);

    std::map<std::string, ZuCommon::Role, std::less<>> roles;
};

} // namespace PluginCommon
