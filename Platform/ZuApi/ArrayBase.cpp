#include "ZuApi/ArrayBase.h"

#include "ZuApi/Exception.h"
#include "ZuApi/INodeVisitor.h"
#include "ZuApi/NodeType.h"
#include "ZuApi/ReferenceArray.h"
#include "ZuApi/Structure.h"

#include <utility>

namespace Zu::Properties::Internal
{

ArrayBase::ArrayBase(SchemaBuilder builder, Factory newFactory) : Node(builder), factory(std::move(newFactory))
{
}

ArrayBase::~ArrayBase() = default;

void ArrayBase::CopyValues(Node const& other)
{
    auto const& source = dynamic_cast<ArrayBase const&>(other);
    Resize(source.Count());
    for (uint64 i = 0; i < source.Count(); ++i)
    {
        // Checked access: an observer may have changed the count of either array.
        ElementAt(i).CopyValues(source.ElementAt(i));
    }
    CopySchema(other);
}

void ArrayBase::SetWriteOnly(bool newWriteOnly)
{
    for (auto const& element : elements)
    {
        element->SetWriteOnly(newWriteOnly);
    }
}

void ArrayBase::Accept(INodeVisitorConst& visitor) const
{
    visitor.VisitArray(*this);
}

void ArrayBase::Accept(INodeVisitor& visitor)
{
    visitor.VisitArray(*this);
}

void ArrayBase::Resize(uint64 count)
{
    if (count < elements.size())
    {
        Shrink(count);
    }
    else if (count > elements.size())
    {
        Grow(count);
    }
}

void ArrayBase::Remove(uint64 index)
{
    if (index >= elements.size())
    {
        ZU_THROW(Status::NOT_FOUND);
    }
    RunObservers();
    if (index >= elements.size()) // an observer has removed elements meanwhile
    {
        ZU_THROW(Status::NOT_FOUND);
    }
    if (items != nullptr)
    {
        items->Remove(index);
    }
    elements.erase(elements.begin() + static_cast<std::ptrdiff_t>(index));
}

void ArrayBase::Clear()
{
    RunObservers();
    if (items != nullptr)
    {
        items->Clear();
    }
    elements.clear();
}

uint64 ArrayBase::Count() const noexcept
{
    return elements.size();
}

Structure& ArrayBase::ElementAt(uint64 index)
{
    if (index >= elements.size())
    {
        ZU_THROW(Status::NOT_FOUND);
    }
    return *elements[index];
}

Structure const& ArrayBase::ElementAt(uint64 index) const
{
    if (index >= elements.size())
    {
        ZU_THROW(Status::NOT_FOUND);
    }
    return *elements[index];
}

std::unique_ptr<Structure> ArrayBase::MakeElement() const
{
    std::unique_ptr<Structure> element = factory ? factory() : nullptr;
    if (element == nullptr)
    {
        ZU_THROW(Status::BAD_ARGUMENT, "The factory of an array makes no elements.");
    }
    return element;
}

void ArrayBase::BuildSchema(Node& node, Structure& schema)
{
    auto& array = static_cast<ArrayBase&>(node);
    auto items = std::make_unique<ReferenceArray>();
    for (auto const& element : array.elements)
    {
        items->Add(element->Schema());
    }
    schema.Register("type", NodeType::Shared(NodeType::Kind::ARRAY));
    schema.Register("items", *items);
    array.items = std::move(items);
}

void ArrayBase::Shrink(uint64 count)
{
    RunObservers();
    while (elements.size() > count)
    {
        if (items != nullptr && items->Count() == elements.size())
        {
            items->Pop(); // first the reference, then the element that it refers to
        }
        elements.pop_back();
    }
}

void ArrayBase::Grow(uint64 count)
{
    RunObservers();
    while (elements.size() < count)
    {
        std::unique_ptr<Structure> element = MakeElement();
        Structure* const added = elements.emplace_back(std::move(element)).get();
        if (items != nullptr)
        {
            items->Add(added->Schema());
        }
        RunObservers();
    }
}

} // namespace Zu::Properties::Internal
