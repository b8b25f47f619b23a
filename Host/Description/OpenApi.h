#pragma once

#include "Host/Security/RouteTable.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <string>
#include <vector>

namespace ZuHost
{

class DescribedRecords;

/// Makes the description of the REST service (OpenAPI 3.1).
///
/// Its sources: the route table with the roles, the resources that are registered, the documents of the protocols with
/// their schemas, and the data files of this folder for what none of them says.
class OpenApi final
{
public:
    /// The running service.
    struct Service
    {
        std::string version;

        /// Returns the methods of the resource of a route, as `ZuRest::ResourceRequestProcessor::MethodsAt`.
        std::function<std::string(std::string const& route)> findMethods;

        /// Returns the document at a path with its schema. Throws if there is none.
        std::function<nlohmann::json(std::string const& path)> readDocument;
    };

    OpenApi() = delete;

    /// Describes the requests of the route table that the service answers.
    static nlohmann::json Describe(Service const& service);

    /// The requests that description.json describes: "GET /sensor", "GET /controls".
    static std::vector<std::string> DescribedRequests();

    /// The requests of the route table that need a description. A route that ends in a key has one request more: the
    /// list at the path without the key, unless no list is there.
    static std::vector<std::string> RequestsToDescribe();
};

} // namespace ZuHost
