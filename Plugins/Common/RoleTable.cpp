#include "Plugins/Common/RoleTable.h"

#include "Plugins/Common/AccessList.h"
#include "ZuApi/Exception.h"

namespace PluginCommon
{

using ZuCommon::Role;

namespace
{

constexpr std::size_t LONGEST_QUOTE_BYTES = 64; // of a faulty entry

[[noreturn]] void Refuse(std::string_view entry, char const* reason)
{
    ZU_THROW(Zu::Status::BAD_ARGUMENT, "roles: \"%s\" %s", std::string(entry.substr(0, LONGEST_QUOTE_BYTES)).c_str(),
             reason);
}

} // namespace

RoleTable::RoleTable(std::string_view table)
    : roles{{"Viewer", Role::VIEWER},
            {"Operator", Role::OPERATOR},
            {"Engineer", Role::ENGINEER},
            {"Administrator", Role::ADMINISTRATOR}}
{
    auto const entries = ListEntries(table);
    if (entries.size() > MOST_ENTRIES)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "roles: there are more than %u entries",
                 static_cast<unsigned>(MOST_ENTRIES));
    }
    for (std::string_view const entry : entries)
    {
        Add(entry);
    }
}

RoleTable::~RoleTable() = default;

Role RoleTable::RoleOf(std::string_view certified) const
{
    auto const found = roles.find(certified);
    return found == roles.end() ? Role::NONE : found->second;
}

void RoleTable::Add(std::string_view entry)
{
    std::size_t const sign = entry.rfind('=');
    std::string_view const text = Trimmed(entry.substr(0, sign));
    auto const role =
        sign == std::string_view::npos ? std::nullopt : ZuCommon::RoleOfName(Trimmed(entry.substr(sign + 1)));
    if (text.empty() || !role)
    {
        Refuse(entry, "is no entry such as Maintenance=engineer: the roles are viewer, operator, engineer and "
                      "administrator");
    }
    if (!roles.emplace(text, *role).second)
    {
        Refuse(entry, "names a text that has a role already");
    }
}

} // namespace PluginCommon
