#pragma once

#include "wApi/wExport.h"

#include <string>
#include <vector>

namespace ZuRest
{

struct Answer;
struct Request;
struct RequestInfo;

/// The interface of a resource that makes its own answers: pages, files, texts, other contents that are no JSON
/// documents, and methods that the other interfaces do not offer. A resource implements it as an additional base.
class ZUPLATFORM_API IContentResource
{
public:
    virtual ~IContentResource();

    /// The methods that the resource answers itself, in place of the other interfaces: "GET" (which includes HEAD),
    /// "PUT", "DELETE".
    virtual std::vector<std::string> ContentMethods() const = 0;

    /// Answers a request with one of these methods. A HEAD request arrives as HEAD; the body of its answer is not sent.
    /// GET and HEAD requests run concurrently, all others run alone in their place. An exception becomes a problem
    /// document.
    virtual Answer AnswerContent(Request const& request, RequestInfo const& info) = 0;
};

} // namespace ZuRest
