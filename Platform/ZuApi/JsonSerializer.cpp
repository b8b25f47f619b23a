#include "ZuApi/JsonSerializer.h"

#include "ZuApi/ArrayBase.h"
#include "ZuApi/Exception.h"
#include "ZuApi/INodeVisitor.h"
#include "ZuApi/IValueIo.h"
#include "ZuApi/ReferenceArray.h"
#include "ZuApi/Structure.h"
#include "ZuApi/ValueBase.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Zu::Properties
{

namespace
{

using Json = nlohmann::json;

/// Raises the JSON library's own type error if `document` is no object; `RequireArray` likewise for an array.
void RequireObject(Json const& document)
{
    if (!document.is_object())
    {
        static_cast<void>(document.get<std::map<std::string, Json>>());
    }
}

void RequireArray(Json const& document)
{
    if (!document.is_array())
    {
        static_cast<void>(document.get<std::vector<Json>>());
    }
}

[[noreturn]] void RefuseNumber(Json const& document, char const* name)
{
    ZU_THROW(Status::BAD_ARGUMENT, "%s is not a whole number in the range of %s.", document.dump().c_str(), name);
}

/// Whether the integral part of `number` fits into `Integer`. A conversion that does not fit is undefined.
template <typename Integer>
bool IsWithinRange(double number)
{
    double const lowest = static_cast<double>(std::numeric_limits<Integer>::min());
    double const beyond = std::ldexp(1.0, std::numeric_limits<Integer>::digits); // one more than the maximum, exactly
    return std::trunc(number) >= lowest && number < beyond;
}

template <typename Integer>
bool IsWholeAndWithinRange(Json const& document)
{
    if (document.is_number_unsigned())
    {
        return std::in_range<Integer>(document.get<uint64>());
    }
    if (document.is_number_integer())
    {
        return std::in_range<Integer>(document.get<int64>());
    }
    auto const number = document.get<double>();
    return IsWithinRange<Integer>(number) && number == std::trunc(number);
}

class JsonReader final : public IValueReader
{
public:
    enum class Numbers
    {
        CONVERTED, ///< converted as the library does it: -1 becomes the largest unsigned value
        CHECKED    ///< numbers that do not fit are refused
    };

    JsonReader(Json const& document, Numbers howNumbers) : present(&document), numbers(howNumbers)
    {
    }

    int32 ReadInt32() override
    {
        return ReadInteger<int32>("int32");
    }

    uint32 ReadUint32() override
    {
        return ReadInteger<uint32>("uint32");
    }

    uint64 ReadUint64() override
    {
        return ReadInteger<uint64>("uint64");
    }

    uint16 ReadUint16() override
    {
        return ReadInteger<uint16>("uint16");
    }

    bool ReadBool() override
    {
        return present->get<bool>();
    }

    double ReadDouble() override
    {
        return present->get<double>();
    }

    std::string ReadString() override
    {
        return present->get<std::string>();
    }

    void BeginArray() override
    {
        RequireArray(*present);
        levels.push_back({present, 0});
    }

    bool NextElement() override
    {
        Level& level = levels.back();
        if (level.next >= level.array->size())
        {
            return false;
        }
        present = &(*level.array)[level.next++];
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
        Json const* array;
        std::size_t next;
    };

    template <typename Integer>
    Integer ReadInteger(char const* name) const
    {
        bool const isRefused = numbers == Numbers::CHECKED
                                   ? present->is_number() && !IsWholeAndWithinRange<Integer>(*present)
                                   : present->is_number_float() && !IsWithinRange<Integer>(present->get<double>());
        if (isRefused)
        {
            RefuseNumber(*present, name);
        }
        return present->get<Integer>();
    }

    Json const* present;
    Numbers const numbers;
    std::vector<Level> levels;
};

class JsonWriter final : public IValueWriter
{
public:
    explicit JsonWriter(Json& document) : present(&document)
    {
    }

    void WriteInt32(int32 value) override
    {
        *present = value;
    }

    void WriteUint32(uint32 value) override
    {
        *present = value;
    }

    void WriteUint64(uint64 value) override
    {
        *present = value;
    }

    void WriteUint16(uint16 value) override
    {
        *present = value;
    }

    void WriteBool(bool value) override
    {
        *present = value;
    }

    void WriteDouble(double value) override
    {
        *present = value;
    }

    void WriteString(std::string const& value) override
    {
        *present = value;
    }

    void BeginArray() override
    {
        *present = Json::array();
        arrays.push_back(present);
    }

    void NextElement() override
    {
        arrays.back()->push_back(nullptr);
        present = &arrays.back()->back();
    }

    void EndArray() override
    {
        present = arrays.back();
        arrays.pop_back();
    }

private:
    Json* present;
    std::vector<Json*> arrays; // pointers stay valid: an array does not grow while one of its elements is open
};

/// Writes each value directly into its place in the document, so that no subtree is moved.
class ValueSerializer final : public INodeVisitorConst
{
public:
    static Json Run(Node const& node)
    {
        Json result;
        ValueSerializer serializer;
        serializer.Descend(node, result);
        return result;
    }

    void VisitValue(Internal::ValueBase const& value) override
    {
        JsonWriter writer(*place);
        value.WriteValue(writer);
    }

    void VisitStructure(Structure const& structure) override
    {
        Json& object = *place = Json::object();
        for (uint64 i = 0; i < structure.Count(); ++i)
        {
            if (!structure.At(i).IsWriteOnly())
            {
                Descend(structure.At(i), object[structure.KeyAt(i)]);
            }
        }
    }

    void VisitArray(Internal::ArrayBase const& array) override
    {
        Json& list = MakeList(array.Count());
        for (uint64 i = 0; i < array.Count(); ++i)
        {
            list.push_back(nullptr);
            Descend(array.ElementAt(i), list.back());
        }
    }

    void VisitReferenceArray(Internal::ReferenceArray const& array) override
    {
        Json& list = MakeList(array.Count());
        for (uint64 i = 0; i < array.Count(); ++i)
        {
            list.push_back(nullptr);
            Descend(array.At(i), list.back());
        }
    }

private:
    void Descend(Node const& node, Json& inner)
    {
        if (node.IsWriteOnly())
        {
            return; // the place keeps its null
        }
        Json* const outer = std::exchange(place, &inner);
        node.Accept(*this);
        place = outer;
    }

    Json& MakeList(uint64 count)
    {
        *place = Json::array();
        place->get_ref<Json::array_t&>().reserve(count); // no element moves while the array is filled
        return *place;
    }

    Json* place = nullptr;
};

class SchemaSerializer final : public INodeVisitorConst
{
public:
    static Json Run(Node const& node)
    {
        SchemaSerializer serializer;
        node.Accept(serializer);
        return std::move(serializer.result);
    }

    void VisitValue(Internal::ValueBase const& value) override
    {
        result = ValueSerializer::Run(*value.Schema());
    }

    void VisitStructure(Structure const& structure) override
    {
        result = ValueSerializer::Run(*structure.Schema());
        Json& properties = result["properties"] = Json::object();
        for (uint64 i = 0; i < structure.Count(); ++i)
        {
            properties[structure.KeyAt(i)] = Run(structure.At(i));
        }
    }

    void VisitArray(Internal::ArrayBase const& array) override
    {
        result = ValueSerializer::Run(*array.Schema());
        Json& items = result["items"] = Json::array(); // including the schemas below the elements
        for (uint64 i = 0; i < array.Count(); ++i)
        {
            items.push_back(Run(array.ElementAt(i)));
        }
    }

    void VisitReferenceArray(Internal::ReferenceArray const& array) override
    {
        result = ValueSerializer::Run(*array.Schema());
    }

private:
    Json result;
};

/// Walks through a node and a document in parallel. The derived class defines the action on a value.
class DocumentWalker : public INodeVisitor
{
public:
    explicit DocumentWalker(Json const& walkedDocument) : document(&walkedDocument)
    {
    }

    void VisitStructure(Structure& structure) override
    {
        Json const& object = *document;
        RequireObject(object);
        for (uint64 i = 0; i < structure.Count(); ++i)
        {
            if (auto const found = object.find(structure.KeyAt(i)); found != object.end())
            {
                Descend(structure.At(i), *found);
            }
        }
    }

    void VisitReferenceArray(Internal::ReferenceArray& /*array*/) override
    {
        ZU_THROW(Status::NOT_SUPPORTED); // schemas cannot be read
    }

protected:
    Json const& Document() const
    {
        return *document;
    }

    void Descend(Node& node, Json const& inner)
    {
        Json const* const outer = std::exchange(document, &inner);
        node.Accept(*this);
        document = outer;
    }

private:
    Json const* document;
};

class Deserializer final : public DocumentWalker
{
public:
    using DocumentWalker::DocumentWalker;

    void VisitValue(Internal::ValueBase& value) override
    {
        JsonReader reader(Document(), JsonReader::Numbers::CONVERTED);
        value.ReadValue(reader);
    }

    void VisitArray(Internal::ArrayBase& array) override
    {
        Json const& list = Document();
        RequireArray(list);
        array.Resize(list.size());
        for (std::size_t i = 0; i < list.size(); ++i)
        {
            Descend(array.ElementAt(i), list[i]);
        }
    }
};

class Validator final : public DocumentWalker
{
public:
    using DocumentWalker::DocumentWalker;

    void VisitValue(Internal::ValueBase& value) override
    {
        JsonReader reader(Document(), JsonReader::Numbers::CHECKED);
        value.ValidateValue(reader);
    }

    void VisitArray(Internal::ArrayBase& array) override
    {
        Json const& list = Document();
        RequireArray(list);
        std::unique_ptr<Structure> added; // stands in for the elements that the array does not have yet
        for (std::size_t i = 0; i < list.size(); ++i)
        {
            if (i >= array.Count() && added == nullptr)
            {
                added = array.MakeElement();
            }
            Descend(i < array.Count() ? array.ElementAt(i) : *added, list[i]);
        }
    }
};

} // namespace

Json JsonSerializer::Serialize(Node const& node)
{
    return ValueSerializer::Run(node);
}

Json JsonSerializer::SerializeSchema(Node const& node)
{
    return SchemaSerializer::Run(node);
}

void JsonSerializer::Deserialize(Node& node, Json const& document)
{
    Deserializer deserializer(document);
    node.Accept(deserializer);
}

void JsonSerializer::Validate(Node& node, Json const& document)
{
    Validator validator(document);
    node.Accept(validator);
}

} // namespace Zu::Properties
