#pragma once

#include <functional>
#include <memory>
#include <string>

namespace ZuRest
{

struct Caller;

/// A request from the network, split into its parts.
struct Request
{
    std::string method = "GET";
    std::string path;   ///< percent-encoded
    std::string query;  ///< the text after the question mark
    std::string body;   ///< JSON, or empty
    std::string accept; ///< this and the next three: the values of the headers; empty if absent
    std::string ifMatch;
    std::string ifNoneMatch;
    std::string prefer;

    std::shared_ptr<Caller const> caller; ///< null: the process itself asks

    /// Called when the request's turn has come, on the thread that processes it. If it returns false, the request is
    /// not carried out and fails with `Zu::Status::BUSY`. An empty function counts as true.
    std::function<bool()> isWanted;
};

} // namespace ZuRest
