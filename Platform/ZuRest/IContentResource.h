#pragma once

#include "wApi/wExport.h"

#include <string>
#include <vector>

namespace ZuRest
{

struct Answer;
struct Request;
struct RequestInfo;

/// The face of a resource that speaks for itself: pages, files, texts, whatever is no JSON document, and methods that the
/// other faces do not know. A resource has it by deriving from it beside its other bases.
class ZUPLATFORM_API IContentResource
{
public:
    virtual ~IContentResource();

    /// The methods that it answers, in place of the other faces: "GET" (which counts for HEAD too), "PUT", "DELETE".
    virtual std::vector<std::string> ContentMethods() const = 0;

    /// Answers a request of one of these methods; HEAD comes as it is, and its body is not sent. GET and HEAD come side by
    /// side, all others alone. Throws as the other faces do, for the same problem documents.
    virtual Answer AnswerContent(Request const& request, RequestInfo const& info) = 0;
};

} // namespace ZuRest
