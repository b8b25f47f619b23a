#pragma once

#include "wApi/wExport.h"

namespace Zu::Properties
{

class Structure;

namespace Internal
{
class ArrayBase;
class ReferenceArray;
class ValueBase;
} // namespace Internal

/// Tells the kinds of node apart for one who only reads: `Node::Accept` calls the operation of its kind. A visitor walks
/// down by itself, by asking the children for `Accept`.
class ZUAPI_API INodeVisitorConst
{
public:
    virtual ~INodeVisitorConst();

    virtual void VisitValue(Internal::ValueBase const& value) = 0;
    virtual void VisitStructure(Structure const& structure) = 0;
    virtual void VisitArray(Internal::ArrayBase const& array) = 0;
    virtual void VisitReferenceArray(Internal::ReferenceArray const& array) = 0;
};

} // namespace Zu::Properties
