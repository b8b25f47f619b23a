#include "ZuRest/JsonText.h"

#include "ZuApi/Exception.h"
#include "ZuApi/JsonTextSerializer.h"
#include "ZuApi/JsonTextWriter.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace ZuRest::JsonText
{

using Writer = Zu::Properties::JsonTextWriter;

namespace
{

constexpr uint8 PART_SUBTYPE = 0x54; // marks binary values that hold JSON text; JSON itself has no binary values

/// Returns the depth of the brackets outside of strings.
uint32 DepthOf(std::string_view text)
{
    uint32 depth = 0;
    uint32 deepest = 0;
    bool isInString = false;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        char const character = text[i];
        if (isInString)
        {
            i += character == '\\' ? 1 : 0;
            isInString = character != '"';
            continue;
        }
        isInString = character == '"';
        if (character == '[' || character == '{')
        {
            deepest = std::max(deepest, ++depth);
        }
        else if (character == ']' || character == '}')
        {
            depth -= depth != 0 ? 1 : 0;
        }
    }
    return deepest;
}

void AppendObject(nlohmann::json::object_t const& members, Writer& writer)
{
    writer.BeginObject();
    for (auto const& [key, value] : members)
    {
        writer.NextMember(key);
        Append(value, writer);
    }
    writer.EndObject();
}

void AppendArray(nlohmann::json::array_t const& elements, Writer& writer)
{
    writer.BeginArray();
    for (nlohmann::json const& element : elements)
    {
        writer.NextElement();
        Append(element, writer);
    }
    writer.EndArray();
}

} // namespace

nlohmann::json Read(std::string_view text)
{
    if (text.size() > MAX_BYTES)
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "The body is longer than %zu bytes.", MAX_BYTES);
    }
    if (DepthOf(text) > MAX_DEPTH)
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "The body is nested deeper than %u levels.", MAX_DEPTH);
    }
    if (text.find('\0') != std::string_view::npos) // the JSON library takes it for the end of the text
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "The body is not valid JSON: it has a zero byte.");
    }
    try
    {
        return nlohmann::json::parse(text.begin(), text.end());
    }
    catch (nlohmann::json::exception const& exception)
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "The body is not valid JSON: %s", exception.what());
    }
}

void Append(nlohmann::json const& value, Writer& writer)
{
    switch (value.type())
    {
    case nlohmann::json::value_t::object:
        AppendObject(*value.get_ptr<nlohmann::json::object_t const*>(), writer);
        break;
    case nlohmann::json::value_t::array:
        AppendArray(*value.get_ptr<nlohmann::json::array_t const*>(), writer);
        break;
    case nlohmann::json::value_t::string:
        writer.WriteString(*value.get_ptr<std::string const*>());
        break;
    case nlohmann::json::value_t::number_integer:
        writer.WriteInt64(*value.get_ptr<nlohmann::json::number_integer_t const*>());
        break;
    case nlohmann::json::value_t::number_unsigned:
        writer.WriteUint64(*value.get_ptr<nlohmann::json::number_unsigned_t const*>());
        break;
    case nlohmann::json::value_t::boolean:
        writer.WriteBool(*value.get_ptr<nlohmann::json::boolean_t const*>());
        break;
    default:
        if (auto const part = TextOfPart(value))
        {
            writer.WriteJson(*part);
        }
        else
        {
            writer.WriteAsLibrary(value);
        }
        break;
    }
}

std::string Write(nlohmann::json const& document)
{
    Writer writer;
    Append(document, writer);
    return writer.Take();
}

nlohmann::json PartOf(Zu::Properties::Node const& node)
{
    Writer writer;
    Zu::Properties::JsonTextSerializer(writer).Write(node);
    return PartOfText(writer.Take());
}

nlohmann::json PartOfList(std::vector<Zu::Properties::Node const*> const& nodes)
{
    Writer writer;
    Zu::Properties::JsonTextSerializer serializer(writer);
    writer.BeginArray();
    for (Zu::Properties::Node const* const node : nodes)
    {
        writer.NextElement();
        serializer.Write(*node);
    }
    writer.EndArray();
    return PartOfText(writer.Take());
}

nlohmann::json PartOfText(std::string_view text)
{
    auto const* const bytes = reinterpret_cast<uint8 const*>(text.data());
    return nlohmann::json::binary({bytes, bytes + text.size()}, PART_SUBTYPE);
}

std::optional<std::string_view> TextOfPart(nlohmann::json const& value)
{
    if (!value.is_binary() || !value.get_binary().has_subtype() || value.get_binary().subtype() != PART_SUBTYPE)
    {
        return std::nullopt;
    }
    auto const& bytes = value.get_binary();
    return std::string_view(reinterpret_cast<char const*>(bytes.data()), bytes.size());
}

} // namespace ZuRest::JsonText
