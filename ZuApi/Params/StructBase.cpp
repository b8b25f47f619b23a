#include "ZuApi/Params/StructBase.h"

#include "ZuApi/InternedText.h"

namespace Zu::Params
{

namespace
{

using Properties::Internal::InternedText;

constexpr uint32 SORT_ORDER_STEP = 100;

} // namespace

StructBase::StructBase(std::string const& newExtendedType)
    : Structure(&StructBase::BuildSchema), showsExtendedType(!newExtendedType.empty())
{
    extendedType.Set(newExtendedType);
}

StructBase::~StructBase() = default;

void StructBase::CopyValues(Properties::Node const& other)
{
    auto const& source = dynamic_cast<StructBase const&>(other);
    Structure::CopyValues(other);
    CopyParams(MadeSchema(), source);
    EnableVisibility(
        // Returns at once: only the record's own constructor adds the key.
        IsVisibilityEnabled());
    extendedType.CopyFrom(source.extendedType);
    nextSortOrder = source.nextSortOrder;
}

StructBase& StructBase::EnableUsed(bool enable)
{
    ParamsBase::EnableUsed(MadeSchema(), enable);
    return *this;
}

StructBase& StructBase::EnableVisibility(bool enable)
{
    ParamsBase::EnableVisibility(MadeSchema(), enable);
    return *this;
}

StructBase& StructBase::EnableReadOnly()
{
    ParamsBase::EnableReadOnly(MadeSchema());
    return *this;
}

void StructBase::BuildSchema(Properties::Node& node, Properties::Structure& schema)
{
    auto& record = static_cast<StructBase&>(node);
    Structure::BuildSchema(node, schema);
    if (record.showsExtendedType)
    {
        schema.Register("extendedType", record.extendedType.Node());
    }
    record.EnterParams(schema);
}

void StructBase::RegisterMember(Text const& key, Text const& memberTitle, Properties::Node& node, ParamsBase& params)
{
    Enter(InternedText::Of(key), node);
    params.title.Share(InternedText::Of(memberTitle.Text().empty() ? key : memberTitle));
    params.sortOrder.Set(nextSortOrder);
    nextSortOrder += SORT_ORDER_STEP;
}

} // namespace Zu::Params
