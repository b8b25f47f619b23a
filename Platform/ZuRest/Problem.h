#pragma once

#include "ZuRest/Answer.h"
#include "wApi/wExport.h"

#include <exception>
#include <nlohmann/json_fwd.hpp>

namespace ZuRest
{

/// The reason why a request failed, as a problem document of RFC 9457.
struct ZUPLATFORM_API Problem
{
    uint32 status = HttpStatus::INTERNAL_ERROR; ///< the HTTP status
    std::string detail;                         ///< a sentence for the user
    int32 code = 0;                             ///< the status of the exception
    std::vector<std::string> causes;            ///< the texts of the nested exceptions, outermost first

    /// Converts `exception`. An exception without a text gets a sentence with the method and the path.
    ///
    /// `HttpStatus::Of` gives the HTTP status, with two exceptions. If any exception in the chain is a JSON exception,
    /// the status is `HttpStatus::BAD_REQUEST`. `Zu::Status::FAILURE` gives `HttpStatus::CONFLICT` if every exception
    /// in the chain is a `Zu::Exception` with a text: then the failure is a refusal with reasons and no internal error.
    static Problem Of(std::exception const& exception, std::string const& method, std::string const& path);

    /// Converts the exception that is being handled; "An internal error." if it is no std::exception. Call it from a
    /// catch block.
    static Problem OfCaught(std::string const& method, std::string const& path);

    nlohmann::json ToJson() const;
    Answer ToAnswer() const;
};

} // namespace ZuRest
