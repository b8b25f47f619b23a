#pragma once

#include "wApi/wTypes.h"

#include <utility> // Asio of this version relies on it and does not include it

#include <boost/asio/ip/tcp.hpp>

#include <memory>
#include <string>

namespace ZuHost
{

class IHttpService;

/// One client, from the accept to the close. It belongs to the I/O thread, and lives on until its last operation has ended.
class HttpConnection
{
public:
    /// The service outlives it.
    static std::shared_ptr<HttpConnection> Make(IHttpService& service, boost::asio::ip::tcp::socket socket);

    virtual ~HttpConnection();

    /// Waits for the first request.
    virtual void Begin() = 0;

    /// Sends this problem, `code` as the status of an exception, and closes.
    virtual void Refuse(uint32 status, int32 code, std::string detail) = 0;

    /// Does what is due when a phase has lasted too long.
    virtual void CheckDeadline(uint64 nowUsec) = 0;

    /// Closes, at once or, when a request is under way, behind its answer.
    virtual void BeginStop() = 0;

    virtual void Close() = 0;
};

} // namespace ZuHost
