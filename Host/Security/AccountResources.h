#pragma once

#include "ZuRest/IContentResource.h"
#include "ZuRest/ResourceBase.h"

#include <functional>
#include <map>
#include <string>

namespace ZuRest
{
class ResourceRouter;
struct Caller;
} // namespace ZuRest

namespace ZuHost
{

class Accounts;

/// A resource that is made of functions, one a method.
class MethodsResource final : public ZuRest::ResourceBase, public ZuRest::IContentResource
{
public:
    using Method = std::function<ZuRest::Answer(ZuRest::Request const& request, ZuRest::RequestInfo const& info)>;
    using Methods = std::map<std::string, Method>;

    explicit MethodsResource(Methods newMethods);
    ~MethodsResource() override;

    std::vector<std::string> ContentMethods() const override;
    ZuRest::Answer AnswerContent(ZuRest::Request const& request, ZuRest::RequestInfo const& info) override;

private:
    Methods const methods;
};

/// The resources of logins and users: "/session", "/sessions", "/users" and "/setup".
///
/// They answer by themselves, since each answer depends on the sender of the request. `ETag` and `If-Match` work as for
/// documents.
class AccountResources final
{
public:
    /// Router and accounts outlive this.
    AccountResources(ZuRest::ResourceRouter& usedRouter, Accounts& usedAccounts);
    ~AccountResources(); ///< removes its routes

    AccountResources(AccountResources const&) = delete;
    AccountResources& operator=(AccountResources const&) = delete;

private:
    using Answer = ZuRest::Answer;
    using Request = ZuRest::Request;
    using Info = ZuRest::RequestInfo;

    Answer ShowSession(Request const& request) const;
    Answer LogIn(Request const& request);
    Answer LogOut(Request const& request);
    Answer ListSessions(Request const& request) const;
    Answer ShowOneSession(Request const& request, Info const& info) const;
    Answer EndSession(Request const& request, Info const& info);
    Answer ListUsers(Request const& request) const;
    Answer AddUser(Request const& request);
    Answer ShowUser(Request const& request, Info const& info) const;
    Answer ChangeUser(Request const& request, Info const& info);
    Answer RemoveUser(Request const& request, Info const& info);
    Answer SetUp(Request const& request);

    ZuRest::ResourceRouter& router;
    Accounts& accounts;

    MethodsResource session;
    MethodsResource sessionList;
    MethodsResource oneSession;
    MethodsResource userList;
    MethodsResource oneUser;
    MethodsResource setup;
};

} // namespace ZuHost
