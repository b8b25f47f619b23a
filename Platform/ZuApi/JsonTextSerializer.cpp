#include "ZuApi/JsonTextSerializer.h"

#include "ZuApi/ArrayBase.h"
#include "ZuApi/JsonTextWriter.h"
#include "ZuApi/ReferenceArray.h"
#include "ZuApi/Structure.h"
#include "ZuApi/ValueBase.h"

#include <algorithm>
#include <span>
#include <string>
#include <string_view>

namespace Zu::Properties
{

/// The keys that all records of a class share, in document order.
struct JsonTextSerializer::Shape
{
    struct Member
    {
        Internal::InternedText key;
        std::size_t place; // index in the order of registration
        std::size_t labelBegin;
        std::size_t labelBytes;
    };

    /// `scratch` is a work buffer: its contents are lost.
    Shape(std::span<Structure::Child const> children, JsonTextWriter& scratch)
    {
        members.reserve(children.size());
        for (std::size_t place = 0; place < children.size(); ++place)
        {
            members.push_back({children[place].key, place, 0, 0});
        }
        std::ranges::sort(members,
                          [](Member const& one, Member const& other) { return one.key.Get() < other.key.Get(); });
        scratch.Cut(0);
        for (Member& member : members)
        {
            member.labelBegin = scratch.Size();
            scratch.WriteLabel(member.key.Get());
            member.labelBytes = scratch.Size() - member.labelBegin;
        }
        labels = scratch.Written(0, scratch.Size());
    }

    bool IsOf(std::span<Structure::Child const> children) const
    {
        auto const isOf = [&children](Member const& member) { return children[member.place].key == member.key; };
        return members.size() == children.size() && std::ranges::all_of(members, isOf);
    }

    std::string_view LabelOf(Member const& member) const
    {
        return std::string_view(labels).substr(member.labelBegin, member.labelBytes);
    }

    std::vector<Member> members; // sorted by key
    std::string labels;
};

/// A cache of shapes of the records at one nesting depth; the oldest shape is replaced. A shape is never replaced while
/// in use, because nested records use the next level.
struct JsonTextSerializer::Level
{
    static constexpr std::size_t SHAPES = 4; // searching more would cost more than it saves

    Shape const& Find(std::span<Structure::Child const> children, JsonTextWriter& scratch)
    {
        auto const found = std::ranges::find_if(shapes, [&](Shape const& shape) { return shape.IsOf(children); });
        if (found != shapes.end())
        {
            return *found;
        }
        if (shapes.size() < SHAPES)
        {
            shapes.reserve(SHAPES);
            return shapes.emplace_back(children, scratch);
        }
        return shapes[next++ % SHAPES] = Shape(children, scratch);
    }

    std::vector<Shape> shapes; // reserved once, so references stay valid
    std::size_t next = 0;      // index of the shape to replace next
};

JsonTextSerializer::JsonTextSerializer(JsonTextWriter& usedWriter) : writer(usedWriter)
{
}

JsonTextSerializer::~JsonTextSerializer() = default;

void JsonTextSerializer::Write(Node const& node)
{
    if (node.IsWriteOnly())
    {
        writer.WriteJson("null");
        return;
    }
    node.Accept(*this);
}

void JsonTextSerializer::VisitValue(Internal::ValueBase const& value)
{
    value.WriteValue(writer);
}

void JsonTextSerializer::VisitStructure(Structure const& structure)
{
    auto const children = structure.Children();
    if (levels.size() == depth)
    {
        levels.emplace_back();
    }
    Shape const& shape = levels[depth++].Find(children, scratch);
    writer.BeginObject();
    for (Shape::Member const& member : shape.members)
    {
        Node const& child = *children[member.place].node;
        if (!child.IsWriteOnly())
        {
            writer.NextLabelledMember(shape.LabelOf(member));
            child.Accept(*this);
        }
    }
    writer.EndObject();
    --depth;
}

void JsonTextSerializer::VisitArray(Internal::ArrayBase const& array)
{
    writer.BeginArray();
    for (uint64 i = 0; i < array.Count(); ++i)
    {
        writer.NextElement();
        Write(array.ElementAt(i));
    }
    writer.EndArray();
}

void JsonTextSerializer::VisitReferenceArray(Internal::ReferenceArray const& array)
{
    writer.BeginArray();
    for (uint64 i = 0; i < array.Count(); ++i)
    {
        writer.NextElement();
        Write(array.At(i));
    }
    writer.EndArray();
}

} // namespace Zu::Properties
