#pragma once

#include "ZuRest/IDocumentResource.h"
#include "ZuRest/ResourceBase.h"

#include <vector>

namespace Zu::Properties
{
class Node;
}

namespace ZuRest
{

/// A resource with a document, and the ways between a document and the nodes that it shows.
class ZUPLATFORM_API DocumentResourceBase : public ResourceBase, public IDocumentResource
{
public:
    DocumentResourceBase();
    ~DocumentResourceBase() override;

    IDocumentResource* DocumentProvider() override;

    /// Refuses with -983 and no text.
    void UpdateDocument(RequestInfo const& request, nlohmann::json const& document) override;

protected:
    /// The values of `node`. When the request asks for the schema an object has it too, under "_schema".
    static nlohmann::json NodeToJson(Zu::Properties::Node const& node, RequestInfo const& request);

    /// The same for a node that nobody looks into on its way to the client, the whole document or a part of it: something that
    /// only stands for it where that will do.
    static nlohmann::json PartToJson(Zu::Properties::Node const& node, RequestInfo const& request);

    /// The same for a list of nodes, in order; none may be null.
    static nlohmann::json ListToJson(std::vector<Zu::Properties::Node const*> const& nodes, RequestInfo const& request);

    /// Fills `node` without validation, storing as it goes. What throws, and how it is left then: JsonSerializer.
    static void NodeFromJson(Zu::Properties::Node& node, nlohmann::json const& document);

    /// Throws what the first value throws that does not take its part of `document`. No value changes and arrays keep their
    /// size; a read-only value notes that it is to pass over the next read, so the node is constant in name only.
    static void ValidateJsonFromNode(Zu::Properties::Node const& node, nlohmann::json const& document);

    /// The whole validation, and only then the filling: a refusal leaves `node` as it was.
    static void NodeFromJsonAndValidate(Zu::Properties::Node& node, nlohmann::json const& document);
};

} // namespace ZuRest
