#pragma once

#include "ZuRest/Answer.h"
#include "wApi/wExport.h"

#include <exception>
#include <nlohmann/json_fwd.hpp>

namespace ZuRest
{

/// Why a request failed, as RFC 9457 has it.
struct ZUPLATFORM_API Problem
{
    uint32 status = HttpStatus::INTERNAL_ERROR; ///< of HTTP
    std::string detail;                         ///< a sentence
    int32 code = 0;                             ///< the status of the exception
    std::vector<std::string> causes;            ///< the texts of what was nested in it, from the outside in

    /// What `exception` says of a request. One without a text gets a plain sentence of what was asked of which path. A JSON
    /// exception anywhere in its chain is the fault of the client; so is a failure without a number that ours alone tell
    /// about, each in words: it is a refusal.
    static Problem Of(std::exception const& exception, std::string const& method, std::string const& path);

    /// What the exception that is being handled says of a request: "An internal error." for what is no std::exception. To be
    /// called from a catch block.
    static Problem OfCaught(std::string const& method, std::string const& path);

    nlohmann::json ToJson() const;
    Answer ToAnswer() const;
};

} // namespace ZuRest
