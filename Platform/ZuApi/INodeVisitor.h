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

/// As `INodeVisitorConst`, for visitors that change the nodes.
class ZUAPI_API INodeVisitor
{
public:
    virtual ~INodeVisitor();

    virtual void VisitValue(Internal::ValueBase& value) = 0;
    virtual void VisitStructure(Structure& structure) = 0;
    virtual void VisitArray(Internal::ArrayBase& array) = 0;
    virtual void VisitReferenceArray(Internal::ReferenceArray& array) = 0;
};

/// Visits nodes for reading: `Node::Accept` calls the operation for the kind of the node. A visitor descends by calling
/// `Accept` on the children itself.
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
