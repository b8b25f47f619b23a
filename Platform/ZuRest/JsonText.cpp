#include "ZuRest/JsonText.h"

#include "ZuApi/Exception.h"
#include "ZuApi/JsonTextSerializer.h"
#include "ZuApi/JsonTextWriter.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace ZuRest::JsonText
{

namespace
{

constexpr uint8 PART_SUBTYPE = 0x54; // of binary values, which JSON has not got: those hold text
constexpr std::size_t USUAL_PART_BYTES = 200;
constexpr std::size_t USUAL_BYTES = 1000; // of a document: more is dearer to get from the heap than to grow to

/// How deep the brackets of a text go that stand outside of strings.
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

/// Appends the text of a document, with the parts that are text already as they are.
class TextWriter final
{
public:
    explicit TextWriter(std::string& writtenText) : text(writtenText), writer(writtenText)
    {
    }

    void Write(nlohmann::json const& value)
    {
        switch (value.type())
        {
        case nlohmann::json::value_t::object:
            WriteObject(*value.get_ptr<nlohmann::json::object_t const*>());
            break;
        case nlohmann::json::value_t::array:
            WriteArray(*value.get_ptr<nlohmann::json::array_t const*>());
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
        case nlohmann::json::value_t::binary:
            WriteBinary(value);
            break;
        default:
            writer.WriteAsLibrary(value);
            break;
        }
    }

private:
    void WriteObject(nlohmann::json::object_t const& members)
    {
        text.push_back('{');
        bool isFirst = true;
        for (auto const& [key, value] : members)
        {
            if (!std::exchange(isFirst, false))
            {
                text.push_back(',');
            }
            writer.WriteString(key);
            text.push_back(':');
            Write(value);
        }
        text.push_back('}');
    }

    void WriteArray(nlohmann::json::array_t const& elements)
    {
        writer.BeginArray();
        for (nlohmann::json const& element : elements)
        {
            writer.NextElement();
            Write(element);
        }
        writer.EndArray();
    }

    void WriteBinary(nlohmann::json const& value)
    {
        auto const& bytes = value.get_binary();
        if (bytes.has_subtype() && bytes.subtype() == PART_SUBTYPE)
        {
            text.append(reinterpret_cast<char const*>(bytes.data()), bytes.size());
        }
        else
        {
            writer.WriteAsLibrary(value);
        }
    }

    std::string& text;
    Zu::Properties::JsonTextWriter writer;
};

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
    if (text.find('\0') != std::string_view::npos) // the library takes it for the end
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

std::string Write(nlohmann::json const& document)
{
    std::string text;
    text.reserve(USUAL_BYTES);
    TextWriter(text).Write(document);
    return text;
}

nlohmann::json PartOf(Zu::Properties::Node const& node)
{
    std::string text;
    text.reserve(USUAL_PART_BYTES);
    Zu::Properties::JsonTextSerializer::Append(node, text);
    return PartOfText(text);
}

nlohmann::json PartOfList(std::vector<Zu::Properties::Node const*> const& nodes)
{
    std::string text;
    text.reserve(USUAL_PART_BYTES * nodes.size());
    Zu::Properties::JsonTextWriter writer(text);
    writer.BeginArray();
    for (Zu::Properties::Node const* const node : nodes)
    {
        writer.NextElement();
        Zu::Properties::JsonTextSerializer::Append(*node, text);
    }
    writer.EndArray();
    return PartOfText(text);
}

nlohmann::json PartOfText(std::string_view text)
{
    auto const* const bytes = reinterpret_cast<uint8 const*>(text.data());
    return nlohmann::json::binary({bytes, bytes + text.size()}, PART_SUBTYPE);
}

} // namespace ZuRest::JsonText
