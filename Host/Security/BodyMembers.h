#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <set>
#include <string>

namespace ZuHost
{

/// The members of a request's body, of which each must be known.
///
/// The bodies have passwords, so no text of an exception shows a value. All operations throw `Zu::Status::BAD_FORMAT` or
/// `Zu::Status::BAD_ARGUMENT` with a sentence for a body that is not as expected.
class BodyMembers final
{
public:
    explicit BodyMembers(std::string const& body);
    ~BodyMembers();

    BodyMembers(BodyMembers const&) = delete;
    BodyMembers& operator=(BodyMembers const&) = delete;

    std::string Text(std::string const& key);
    std::optional<std::string> OptionalText(std::string const& key);
    std::optional<bool> OptionalFlag(std::string const& key);

    /// Throws if the body has a member that no call above has named.
    void CheckAllKnown() const;

private:
    nlohmann::json const* Find(std::string const& key);

    nlohmann::json document;
    std::set<std::string> known;
};

} // namespace ZuHost
