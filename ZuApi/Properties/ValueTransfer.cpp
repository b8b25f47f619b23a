#include "ZuApi/Properties/ValueTransfer.h"

#include "ZuApi/Structure.h"

namespace Zu::Properties::Internal
{

namespace
{

Structure* MakeItems(NodeType::Kind kind)
{
    // Never freed: values in static objects may be destroyed after any other static.
    auto* const items = new Structure(false);
    items->Register("type", NodeType::Shared(kind));
    return items;
}

} // namespace

Structure& SharedItems(NodeType::Kind kind)
{
    static Structure* const integers = MakeItems(NodeType::Kind::INTEGER);
    static Structure* const texts = MakeItems(NodeType::Kind::STRING);
    return kind == NodeType::Kind::STRING ? *texts : *integers;
}

} // namespace Zu::Properties::Internal
