#pragma once

#include "Host/Http/BearerToken.h"
#include "Host/Http/HttpServer.h"
#include "Host/Http/IGatekeeper.h"
#include "ZuRest/Caller.h"
#include "ZuRest/Problem.h"
#include "wApi/wMutex.h"

#include <atomic>
#include <memory>
#include <string>
#include <utility>

namespace ZuTest
{

/// Admits reads of "/health" from everybody, and other requests with the token, if there is one.
class FakeGatekeeper final : public ZuHost::IGatekeeper
{
public:
    explicit FakeGatekeeper(std::string newToken = "") : token(std::move(newToken))
    {
    }

    ZuHost::Admission Admit(ZuHost::Credentials const& credentials) override
    {
        Keep(credentials);
        ZuHost::Admission admission;
        bool const isOpen = credentials.method == "GET" && credentials.path == "/health";
        if (isOpen || token.IsGiven(credentials.authorization))
        {
            admission.caller = std::make_shared<ZuRest::Caller const>(
                ZuRest::Caller{ZuCommon::Role::ADMINISTRATOR, "tester", credentials.source.to_string(), "", false});
            admission.maxBodyBytes = isOpen ? openBodyBytes : ZuHost::HttpServer::MAX_BODY_BYTES;
            return admission;
        }
        admission.refusal = ZuRest::Problem{ZuRest::HttpStatus::UNAUTHORIZED, "No.", 0, {}}.ToAnswer();
        admission.refusal.headers.emplace_back("WWW-Authenticate", "Bearer");
        admission.isWrongSecret = !credentials.authorization.empty();
        return admission;
    }

    bool IsCurrent(ZuRest::Caller const& /*caller*/) const noexcept override
    {
        return areCallersCurrent;
    }

    Zu::Signal<>& EndedSignal() noexcept override
    {
        return endedSignal;
    }

    /// The parts of the last credentials, with blanks between them.
    std::string Last() const
    {
        Zu::MutexLock const guard(lock);
        return last;
    }

    ZuHost::CurrentToken token;
    uint64 openBodyBytes = 0; ///< of a request without the token
    std::atomic<bool> areCallersCurrent = true;

private:
    void Keep(ZuHost::Credentials const& credentials)
    {
        Zu::MutexLock const guard(lock);
        last = credentials.method;
        for (std::string_view const part : {credentials.path, credentials.query, credentials.authorization,
                                            credentials.cookie, credentials.crossSiteToken})
        {
            last.append(" ").append(part);
        }
        last.append(" ").append(credentials.source.to_string());
    }

    Zu::Signal<> endedSignal;
    mutable Zu::Mutex lock;
    std::string last ZU_GUARDED_BY(lock);
};

} // namespace ZuTest
