#pragma once

#include "ZuApi/Params/ParamsBase.h"
#include "ZuApi/Structure.h"
#include "ZuApi/TextKey.h"

#include <concepts>
#include <string>

namespace Zu::Params
{

/// A named set of parameters, which are members of the class that derives from it.
///
/// Its constructor registers them one by one; the order decides their sort order and goes on in derived records. Its own
/// read-only mark says nothing about the members.
class ZUAPI_API StructBase : public Properties::Structure, public ParamsBase
{
public:
    using Text = Properties::Internal::TextKey; ///< takes a literal or any other text

    /// A text shows in the schema as "extendedType"; the empty one does not.
    explicit StructBase(std::string const& newExtendedType);
    ~StructBase() override;

    StructBase(StructBase const&) = delete;
    StructBase& operator=(StructBase const&) = delete;

    /// Takes over the members that both have, the attributes and marks, the type name, and where the other's registration
    /// stands; std::bad_cast for what is no record. A copied visibility is not entered into the schema.
    void CopyValues(Properties::Node const& other) override;

    using Properties::Structure::Register; // for a member that comes back: title and sort order stay

    /// Adds `member` under `key` and gives it back. Title: the key for an empty `memberTitle`; sort order: 100 above the last.
    /// Stores nothing in a member that has both already: a live record may be registered beside readers.
    template <std::derived_from<Properties::Node> Member>
    requires std::derived_from<Member, ParamsBase> Member& Register(Text key, Text memberTitle, Member& member)
    {
        RegisterMember(key, memberTitle, member, member);
        return member;
    }

    /// Shows in the schema whether the record is in use, which `used` tells; -997 for true when visibility is enabled.
    StructBase& EnableUsed(bool enable);

    /// Makes the mask, 0 at first, and shows it; -997 for true when used is enabled.
    StructBase& EnableVisibility(bool enable);

    /// Shows `readOnly` in the schema.
    StructBase& EnableReadOnly();

    TextAttribute extendedType; ///< the record's own type name
    uint32 nextSortOrder = 0;   ///< what the next member gets

protected:
    static void BuildSchema(Properties::Node& node, Properties::Structure& schema);

private:
    void RegisterMember(Text const& key, Text const& memberTitle, Properties::Node& node, ParamsBase& params);

    bool const showsExtendedType;
};

} // namespace Zu::Params
