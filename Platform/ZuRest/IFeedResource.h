#pragma once

#include "wApi/wExport.h"

namespace ZuRest
{

struct Answer;
struct Request;
struct RequestInfo;

/// The interface of a resource that answers some reads with a body that comes in parts, such as a stream of numbers. A
/// resource implements it as an additional base.
class ZUPLATFORM_API IFeedResource
{
public:
    virtual ~IFeedResource();

    /// Whether this read asks for such a body, as its header Accept says. If not, the other interfaces answer it.
    virtual bool WantsFeed(Request const& request) const = 0;

    /// Answers with `Answer::openBody`. A HEAD request arrives as HEAD; its body is not opened. An exception becomes a
    /// problem document.
    virtual Answer AnswerFeed(Request const& request, RequestInfo const& info) = 0;
};

} // namespace ZuRest
