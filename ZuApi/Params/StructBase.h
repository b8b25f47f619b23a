#pragma once

#include "ZuApi/Params/ParamsBase.h"
#include "ZuApi/Structure.h"
#include "ZuApi/TextKey.h"

#include <concepts>
#include <string>

namespace Zu::Params
{

/// A record: a named set of parameters, which are members of the derived class.
///
/// The constructor of the record registers its members one by one. The order of registration gives their sort order and
/// continues in derived records. The record's read-only mark does not affect its members.
class ZUAPI_API StructBase : public Properties::Structure, public ParamsBase
{
public:
    using Text = Properties::Internal::TextKey; ///< accepts literals and other texts

    /// The schema shows a non-empty text as "extendedType".
    explicit StructBase(std::string const& newExtendedType);
    ~StructBase() override;

    StructBase(StructBase const&) = delete;
    StructBase& operator=(StructBase const&) = delete;

    /// Copies the members that both records have, the attributes and marks, the type name and `nextSortOrder`. Throws
    /// std::bad_cast if `other` is no record. A copied visibility is not added to the schema.
    void CopyValues(Properties::Node const& other) override;

    using Properties::Structure::Register; // for a member that is registered again: title and sort order stay

    /// Registers `member` under `key` and returns it. The member gets `memberTitle`, or the key if that is empty, as
    /// its title, and `nextSortOrder` as its sort order; that counter then grows by 100. The call does not write to a
    /// member that has this title and sort order already, so other threads may read such a member meanwhile.
    template <std::derived_from<Properties::Node> Member>
    requires std::derived_from<Member, ParamsBase> Member& Register(Text key, Text memberTitle, Member& member)
    {
        RegisterMember(key, memberTitle, member, member);
        return member;
    }

    /// Shows `used`, which tells whether the record is in use, in the schema. Throws `Zu::Status::BAD_ARGUMENT` for
    /// true while visibility is enabled.
    StructBase& EnableUsed(bool enable);

    /// Creates the `visibility` mask with the value 0 and shows it in the schema. False removes it. Throws
    /// `Zu::Status::BAD_ARGUMENT` for true while used is enabled.
    StructBase& EnableVisibility(bool enable);

    /// Shows `readOnly` in the schema.
    StructBase& EnableReadOnly();

    TextAttribute extendedType; ///< the record's own type name
    uint32 nextSortOrder = 0;   ///< the sort order of the next member

protected:
    static void BuildSchema(Properties::Node& node, Properties::Structure& schema);

private:
    void RegisterMember(Text const& key, Text const& memberTitle, Properties::Node& node, ParamsBase& params);

    bool const showsExtendedType;
};

} // namespace Zu::Params
