#pragma once

#include "wApi/wExport.h"

#include <string>

namespace ZuRest
{

struct Answer;
struct RequestInfo;

/// The interface of a resource whose document clients also get in other formats: `GET` with `?format=NAME`. A resource
/// implements it as an additional base.
class ZUPLATFORM_API IFormattedResource
{
public:
    /// The answer in the format of this name, without a tag. A name that the resource does not know is answered with
    /// `HttpStatus::NOT_ACCEPTABLE`. Runs as a read of the document does. An exception becomes a problem document.
    virtual Answer AnswerFormat(std::string const& format,
                                RequestInfo const& info) = 0; // slot order is part of the plug-in interface

    virtual ~IFormattedResource(); // after the other slot, which keeps its place
};

} // namespace ZuRest
