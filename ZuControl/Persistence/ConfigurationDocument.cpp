#include "ZuControl/Persistence/ConfigurationDocument.h"

#include "ZuApi/JsonSerializer.h"
#include "ZuControl/Persistence/DocumentElement.h"

#include <nlohmann/json.hpp>

#include <string_view>

namespace ZuControl
{

using Zu::Properties::JsonSerializer;
using Json = nlohmann::json;
using Element = simdjson::dom::element;

DocumentPart::DocumentPart(Json const& json) : value(&json)
{
}

DocumentPart::DocumentPart(Element newElement) : value(newElement)
{
}

bool DocumentPart::IsArray() const
{
    Element const* const element = std::get_if<Element>(&value);
    return element != nullptr ? element->is_array() : std::get<Json const*>(value)->is_array();
}

std::optional<DocumentPart> DocumentPart::Find(char const* key) const
{
    if (Element const* const element = std::get_if<Element>(&value))
    {
        auto const found = DocumentElement::Find(*element, key);
        return found ? std::optional(DocumentPart(*found)) : std::nullopt;
    }
    Json const& json = *std::get<Json const*>(value);
    auto const found = json.find(key); // the end also for a value that is no object
    return found != json.end() ? std::optional(DocumentPart(*found)) : std::nullopt;
}

std::vector<DocumentPart> DocumentPart::Elements() const
{
    std::vector<DocumentPart> elements;
    if (Element const* const element = std::get_if<Element>(&value); element != nullptr && element->is_array())
    {
        for (Element const inner : element->get_array())
        {
            elements.emplace_back(inner);
        }
        return elements;
    }
    if (Element const* const element = std::get_if<Element>(&value))
    {
        Json const other = DocumentElement::ToJson(*element);
        return DocumentPart(other).Elements(); // no elements, or it throws
    }
    Json const& json = *std::get<Json const*>(value);
    for (std::size_t i = 0; i < json.size(); ++i)
    {
        elements.emplace_back(json[i]); // by index: throws for a value that is no array
    }
    return elements;
}

std::string DocumentPart::Text() const
{
    Element const* const element = std::get_if<Element>(&value);
    return element != nullptr ? DocumentElement::ToJson(*element).get<std::string>()
                              : std::get<Json const*>(value)->get<std::string>();
}

void DocumentPart::ReadInto(Zu::Properties::Node& node) const
{
    if (Element const* const element = std::get_if<Element>(&value))
    {
        DocumentElement::ReadInto(node, *element);
    }
    else
    {
        JsonSerializer::Deserialize(node, *std::get<Json const*>(value));
    }
}

ConfigurationDocument::ConfigurationDocument(std::string const& text)
    : isRead(parser.parse(text).get(root) == simdjson::SUCCESS)
{
    if (!isRead)
    {
        json = nlohmann::json::parse(text);
    }
}

ConfigurationDocument::~ConfigurationDocument() = default;

DocumentPart ConfigurationDocument::Root() const
{
    return isRead ? DocumentPart(root) : DocumentPart(json);
}

nlohmann::json const& ConfigurationDocument::ToJson()
{
    if (isRead && json.is_null())
    {
        json = DocumentElement::ToJson(root);
    }
    return json;
}

bool HasNul(std::string const& text)
{
    return text.find('\0') != std::string::npos;
}

std::string WithoutNuls(std::string text)
{
    constexpr std::string_view ESCAPED = "\\u0000";
    for (std::size_t nul = 0; (nul = text.find('\0', nul)) != std::string::npos; nul += ESCAPED.size())
    {
        text.replace(nul, 1, ESCAPED);
    }
    return text;
}

} // namespace ZuControl
