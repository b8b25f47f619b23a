#pragma once

#include "ZuCommon/Role.h"

#include <optional>
#include <string>

namespace ZuRest
{
struct Caller;
}

namespace ZuHost
{

struct Credentials;

/// A person or program that a source of callers knows.
struct KnownCaller
{
    ZuCommon::Role role = ZuCommon::Role::NONE;
    std::string name;      ///< as `ZuRest::Caller::name`
    std::string sessionId; ///< as `ZuRest::Caller::sessionId`
};

/// The judgement of one source of callers on the credentials of a request.
struct Proof
{
    std::optional<KnownCaller> caller; ///< set if the secret is right
    std::string refusal;               ///< a sentence: the caller is known, but this request is not accepted (403)
    bool isWrongSecret = false; ///< the request shows a secret of this kind, and the secret is wrong or has ended
};

/// Knows the callers of one kind: the token file, the named tokens, the sessions of browsers.
///
/// All operations are thread-safe and do not block: threads of the I/O call them.
class ICallerSource
{
public:
    virtual ~ICallerSource() = default;

    /// Whether a caller of this kind may exist. While no source has callers, and only this machine reaches the service,
    /// the service is open. A source that cannot read its callers returns true, so that the service stays closed.
    virtual bool HasCallers() const noexcept = 0;

    /// Looks at the secret that the request shows. A default `Proof` means that it shows none of this kind.
    virtual Proof Find(Credentials const& credentials) = 0;

    /// Whether this source has given `caller` and would still do so. False for a caller of another source.
    virtual bool IsCurrent(ZuRest::Caller const& caller) const noexcept = 0;
};

} // namespace ZuHost
