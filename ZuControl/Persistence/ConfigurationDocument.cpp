#include "ZuControl/Persistence/ConfigurationDocument.h"

#include "ZuControl/Persistence/DocumentElement.h"

namespace ZuControl
{

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

} // namespace ZuControl
