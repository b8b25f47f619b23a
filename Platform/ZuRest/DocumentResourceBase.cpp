#include "ZuRest/DocumentResourceBase.h"

#include "ZuApi/Exception.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Node.h"
#include "ZuRest/JsonText.h"
#include "ZuRest/RequestInfo.h"

#include <nlohmann/json.hpp>

namespace ZuRest
{

using Zu::Properties::JsonSerializer;
using Zu::Properties::Node;

namespace
{

/// Whether only the text writer reads the document.
bool WantsTextAlone(RequestInfo const& request)
{
    return request.isForText && !request.wantsSchema;
}

} // namespace

DocumentResourceBase::DocumentResourceBase() = default;
DocumentResourceBase::~DocumentResourceBase() = default;

IDocumentResource* DocumentResourceBase::DocumentProvider()
{
    return this;
}

void DocumentResourceBase::UpdateDocument(RequestInfo const& /*request*/, nlohmann::json const& /*document*/)
{
    ZU_THROW(Zu::Status::NOT_UPDATABLE);
}

nlohmann::json DocumentResourceBase::NodeToJson(Node const& node, RequestInfo const& request)
{
    nlohmann::json document = JsonSerializer::Serialize(node);
    if (request.wantsSchema && document.is_object())
    {
        document["_schema"] = JsonSerializer::SerializeSchema(node);
    }
    return document;
}

nlohmann::json DocumentResourceBase::PartToJson(Node const& node, RequestInfo const& request)
{
    return WantsTextAlone(request) ? JsonText::PartOf(node) : NodeToJson(node, request);
}

nlohmann::json DocumentResourceBase::ListToJson(std::vector<Node const*> const& nodes, RequestInfo const& request)
{
    if (WantsTextAlone(request))
    {
        return JsonText::PartOfList(nodes);
    }
    nlohmann::json list = nlohmann::json::array();
    for (Node const* const node : nodes)
    {
        list.push_back(NodeToJson(*node, request));
    }
    return list;
}

void DocumentResourceBase::NodeFromJson(Node& node, nlohmann::json const& document)
{
    JsonSerializer::Deserialize(node, document);
}

void DocumentResourceBase::ValidateJsonFromNode(Node const& node, nlohmann::json const& document)
{
    JsonSerializer::Validate(const_cast<Node&>(node), document); // the cast only lets a read-only value set its mark
}

void DocumentResourceBase::NodeFromJsonAndValidate(Node& node, nlohmann::json const& document)
{
    JsonSerializer::Validate(node, document);
    JsonSerializer::Deserialize(node, document);
}

} // namespace ZuRest
