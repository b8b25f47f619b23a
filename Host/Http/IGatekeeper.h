#pragma once

#include "ZuApi/Signal.h"
#include "ZuRest/Answer.h"
#include "wApi/wTypes.h"

#include <utility> // before Asio's headers, which use it without including it

#include <boost/asio/ip/address.hpp>

#include <memory>
#include <optional>
#include <string_view>

namespace ZuRest
{
struct Caller;
}

namespace ZuHost
{

/// The part of a request's header by which a sender is known and its request is judged. Valid during the call.
struct Credentials
{
    std::string_view method;
    std::string_view path; ///< percent-encoded, without the query
    std::string_view query;
    std::string_view authorization; ///< this and the next two: values of headers; empty if absent
    std::string_view cookie;
    std::string_view crossSiteToken; ///< X-CSRF-Token
    boost::asio::ip::address source;
    bool isEncrypted = false;
};

/// The judgement on a request.
struct Admission
{
    std::shared_ptr<ZuRest::Caller const> caller; ///< set if the request is admitted
    ZuRest::Answer refusal;                       ///< otherwise: such as 401 or 403, as a problem document
    bool isWrongSecret = false;                   ///< refused for a wrong secret: the refusal is slowed down
    uint64 maxBodyBytes = 0;                      ///< of an admitted request: strangers occupy little memory
};

/// Decides from the header of a request whether the request is carried out.
class IGatekeeper
{
public:
    virtual ~IGatekeeper() = default;

    /// Any thread may call; it must not block, since threads of the I/O call it.
    virtual Admission Admit(Credentials const& credentials) = 0;

    /// Whether an admitted caller may still read a stream that it has opened: its token or session has not ended. As
    /// `Admit`.
    virtual bool IsCurrent(ZuRest::Caller const& caller) const noexcept = 0;

    /// Fires when a token or session has been ended before its time: streams of its caller end.
    virtual Zu::Signal<>& EndedSignal() noexcept = 0;
};

} // namespace ZuHost
