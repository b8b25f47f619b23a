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

} // namespace Zu::Properties
