#include "ZuControl/Persistence/DocumentElement.h"

#include "ZuApi/ArrayBase.h"
#include "ZuApi/INodeVisitor.h"
#include "ZuApi/IValueIo.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Properties/Value.h"
#include "ZuApi/ReferenceArray.h"
#include "ZuApi/Structure.h"
#include "ZuApi/ValueBase.h"
#include "wApi/wTypes.h"

#include <nlohmann/json.hpp>

#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace ZuControl
{

using Zu::Properties::JsonSerializer;
using Json = nlohmann::json;
using Element = simdjson::dom::element;
using Type = simdjson::dom::element_type;

namespace
{

// Recursive: simdjson refuses documents with more than 1,024 levels.
void Fill(Json& place, Element const& element);

void FillArray(Json& place, simdjson::dom::array const& elements)
{
    place = Json::array();
    for (Element const element : elements)
    {
        place.push_back(nullptr);
        Fill(place.back(), element);
    }
}

void FillObject(Json& place, simdjson::dom::object const& object)
{
    place = Json::object();
    for (auto const& [key, value] : object)
    {
        Fill(place[std::string(key)], value);
    }
}

void Fill(Json& place, Element const& element)
{
    switch (element.type())
    {
    case Type::ARRAY:
        FillArray(place, element.get_array());
        break;
    case Type::OBJECT:
        FillObject(place, element.get_object());
        break;
    case Type::INT64:
        if (int64 const number = element.get_int64(); number < 0)
        {
            place = number;
            break;
        }
        [[fallthrough]]; // nlohmann::json stores numbers from 0 on as unsigned
    case Type::UINT64:
        place = uint64{element.get_uint64()};
        break;
    case Type::DOUBLE:
        place = double{element.get_double()};
        break;
    case Type::STRING:
        place = std::string(std::string_view(element.get_string()));
        break;
    case Type::BOOL:
        place = bool{element.get_bool()};
        break;
    case Type::NULL_VALUE:
        place = nullptr;
        break;
    }
}

/// Stores values of the node's own type directly. The serializer converts or refuses the others.
class ElementReader final : public Zu::Properties::IValueReader
{
public:
    explicit ElementReader(Element const& element) : present(element)
    {
    }

    int32 ReadInt32() override
    {
        return ReadInteger<int32>();
    }

    uint32 ReadUint32() override
    {
        return ReadInteger<uint32>();
    }

    uint64 ReadUint64() override
    {
        return ReadInteger<uint64>();
    }

    uint16 ReadUint16() override
    {
        return ReadInteger<uint16>();
    }

    bool ReadBool() override
    {
        return present.is_bool() ? bool{present.get_bool()} : ReadBySerializer<bool>();
    }

    double ReadDouble() override
    {
        return present.type() == Type::DOUBLE ? double{present.get_double()} : ReadBySerializer<double>();
    }

    std::string ReadString() override
    {
        return present.is_string() ? std::string(std::string_view(present.get_string()))
                                   : ReadBySerializer<std::string>();
    }

    void BeginArray() override
    {
        if (!present.is_array())
        {
            ReadBySerializer<std::vector<std::string>>(); // throws
        }
        simdjson::dom::array const array = present.get_array();
        levels.push_back({present, array.begin(), array.end()});
    }

    bool NextElement() override
    {
        Level& level = levels.back();
        if (level.next == level.end)
        {
            return false;
        }
        present = *level.next;
        ++level.next;
        return true;
    }

    void EndArray() override
    {
        present = levels.back().array;
        levels.pop_back();
    }

private:
    struct Level
    {
        Element array;
        simdjson::dom::array::iterator next;
        simdjson::dom::array::iterator end;
    };

    template <typename Integer>
    Integer ReadInteger() const
    {
        switch (present.type())
        {
        case Type::INT64:
            return static_cast<Integer>(int64{present.get_int64()}); // no range check without validation
        case Type::UINT64:
            return static_cast<Integer>(uint64{present.get_uint64()});
        default:
            return ReadBySerializer<Integer>();
        }
    }

    template <typename T>
    T ReadBySerializer() const
    {
        Zu::Properties::Value<T> value;
        JsonSerializer::Deserialize(value, DocumentElement::ToJson(present));
        return value.Get();
    }

    Element present;
    std::vector<Level> levels;
};

/// Walks down a node and an element side by side. When their kinds differ, the serializer throws.
class NodeFiller final : public Zu::Properties::INodeVisitor
{
public:
    explicit NodeFiller(Element const& filledFrom) : element(filledFrom)
    {
    }

    void VisitValue(Zu::Properties::Internal::ValueBase& value) override
    {
        ElementReader reader(element);
        value.ReadValue(reader);
    }

    void VisitStructure(Zu::Properties::Structure& structure) override
    {
        if (!element.is_object())
        {
            JsonSerializer::Deserialize(structure, DocumentElement::ToJson(element));
            return;
        }
        Element const object = element;
        for (uint64 i = 0; i < structure.Count(); ++i)
        {
            if (auto const found = DocumentElement::Find(object, structure.KeyAt(i)))
            {
                Descend(structure.At(i), *found);
            }
        }
    }

    void VisitArray(Zu::Properties::Internal::ArrayBase& array) override
    {
        if (!element.is_array())
        {
            JsonSerializer::Deserialize(array, DocumentElement::ToJson(element));
            return;
        }
        simdjson::dom::array const list = element.get_array();
        array.Resize(static_cast<uint64>(std::distance(list.begin(), list.end()))); // not size(), which saturates
        uint64 next = 0;
        for (Element const inner : list)
        {
            Descend(array.ElementAt(next++), inner);
        }
    }

    void VisitReferenceArray(Zu::Properties::Internal::ReferenceArray& array) override
    {
        JsonSerializer::Deserialize(array, DocumentElement::ToJson(element));
    }

private:
    void Descend(Zu::Properties::Node& node, Element const& inner)
    {
        Element const outer = std::exchange(element, inner);
        node.Accept(*this);
        element = outer;
    }

    Element element;
};

} // namespace

std::optional<Element> DocumentElement::Find(Element const& element, std::string_view key)
{
    std::optional<Element> found;
    if (element.is_object())
    {
        simdjson::dom::object const object = element.get_object();
        for (auto member = object.begin(); member != object.end(); ++member)
        {
            if (member.key() == key)
            {
                found = member.value();
            }
        }
    }
    return found;
}

void DocumentElement::ReadInto(Zu::Properties::Node& node, Element const& element)
{
    NodeFiller filler(element);
    node.Accept(filler);
}

Json DocumentElement::ToJson(Element const& element)
{
    Json json;
    Fill(json, element);
    return json;
}

} // namespace ZuControl
