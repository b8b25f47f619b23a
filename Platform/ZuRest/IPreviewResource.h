#pragma once

#include "wApi/wExport.h"

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace ZuRest
{

struct Answer;
struct RequestInfo;

/// Marks a callable resource that changes another document. A resource derives from it as an additional base. `If-Match`
/// of a call then names a state of that document.
class ZUPLATFORM_API ISubjectResource
{
public:
    /// The path of the document, as the client spells it.
    virtual std::string
    SubjectPath(RequestInfo const& request) const = 0; // slot order is part of the plug-in interface

    virtual ~ISubjectResource(); // after the other slot, which keeps its place
};

/// A resource that answers a POST without changing anything: it foretells a change of its subject. A resource derives
/// from it as an additional base.
class ZUPLATFORM_API IPreviewResource : public ISubjectResource
{
public:
    /// Reads the present state, to which `tag` belongs, and returns the function that makes the answer from it. Runs as
    /// a read of its place; the function runs when the place is free again, so that it holds up no change. It uses
    /// nothing that the next change may touch. An exception becomes a problem document.
    virtual std::function<Answer()> Preview(RequestInfo const& request, nlohmann::json const& body,
                                            std::string const& tag) = 0;
};

} // namespace ZuRest
