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

/// A resource with a document. Offers conversions between documents and nodes to derived classes.
class ZUPLATFORM_API DocumentResourceBase : public ResourceBase, public IDocumentResource
{
public:
    DocumentResourceBase();
    ~DocumentResourceBase() override;

    IDocumentResource* DocumentProvider() override;

    /// Throws `Zu::Status::NOT_UPDATABLE` without a text.
    void UpdateDocument(RequestInfo const& request, nlohmann::json const& document) override;

protected:
    /// Returns the values of `node`. If the request asks for the schema, an object also contains it, under "_schema".
    static nlohmann::json NodeToJson(Zu::Properties::Node const& node, RequestInfo const& request);

    /// As `NodeToJson`, for a node that no code inspects before it is sent, as the whole document or as a part of it.
    /// If the request allows, the result is a value of `JsonText::PartOf`, which only the text writer understands.
    static nlohmann::json PartToJson(Zu::Properties::Node const& node, RequestInfo const& request);

    /// As `PartToJson`, for a list of nodes, in order; none may be null.
    static nlohmann::json ListToJson(std::vector<Zu::Properties::Node const*> const& nodes, RequestInfo const& request);

    /// Fills `node` without validation. Values are stored one by one; `JsonSerializer::Deserialize` describes the
    /// exceptions and the state after them.
    static void NodeFromJson(Zu::Properties::Node& node, nlohmann::json const& document);

    /// Validates `document` against `node` and throws the exception of the first value that refuses its part. Values
    /// and sizes of arrays do not change. A read-only value only marks that it ignores the next read, so `node` is
    /// const in name only.
    static void ValidateJsonFromNode(Zu::Properties::Node const& node, nlohmann::json const& document);

    /// Validates the whole `document`, then fills `node`. A refusal leaves `node` unchanged.
    static void NodeFromJsonAndValidate(Zu::Properties::Node& node, nlohmann::json const& document);
};

} // namespace ZuRest
