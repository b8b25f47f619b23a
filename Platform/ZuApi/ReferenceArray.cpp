#include "ZuApi/ReferenceArray.h"

#include "ZuApi/Exception.h"
#include "ZuApi/INodeVisitor.h"

#include <typeinfo>

namespace Zu::Properties::Internal
{

ReferenceArray::ReferenceArray() : Node(nullptr)
{
}

ReferenceArray::~ReferenceArray() = default;

void ReferenceArray::CopyValues(Node const& other)
{
    if (dynamic_cast<ReferenceArray const*>(&other) == nullptr)
    {
        throw std::bad_cast();
    }
}

void ReferenceArray::Accept(INodeVisitorConst& visitor) const
{
    visitor.VisitReferenceArray(*this);
}

void ReferenceArray::Accept(INodeVisitor& visitor)
{
    visitor.VisitReferenceArray(*this);
}

void ReferenceArray::Add(Structure* structure)
{
    if (structure == nullptr)
    {
        ZU_THROW(Status::BAD_ARGUMENT);
    }
    structures.push_back(structure);
}

void ReferenceArray::Remove(uint64 index)
{
    if (index >= structures.size())
    {
        ZU_THROW(Status::NOT_FOUND);
    }
    structures.erase(structures.begin() + static_cast<std::ptrdiff_t>(index));
}

void ReferenceArray::Pop()
{
    if (structures.empty())
    {
        ZU_THROW(Status::NOT_FOUND);
    }
    structures.pop_back();
}

void ReferenceArray::Clear() noexcept
{
    structures.clear();
}

uint64 ReferenceArray::Count() const noexcept
{
    return structures.size();
}

Structure& ReferenceArray::At(uint64 index) const
{
    if (index >= structures.size())
    {
        ZU_THROW(Status::NOT_FOUND);
    }
    return *structures[index];
}

} // namespace Zu::Properties::Internal
