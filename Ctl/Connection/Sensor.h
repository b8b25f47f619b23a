#pragma once

#include "Ctl/Connection/HttpClient.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <string>
#include <string_view>

namespace ZuCtl
{

/// How the sensor knows the caller. Without a token and a user it may still be open to programs of its machine.
struct Credentials
{
    std::string token;
    std::string user;
    std::string password; ///< of the user
};

/// A ZuControl host, over REST. Not thread-safe.
///
/// The first request is preceded by `GET /health` without the token: a server that is no ZuControl host never gets it.
/// A refusal by the host is `Failure` with the sentence of the host.
class Sensor final
{
public:
    static constexpr int MAX_DOCUMENT_LEVELS = 128;

    Sensor(HttpSettings settings, Credentials newCredentials);
    ~Sensor(); ///< logs the user out
    Sensor(Sensor const&) = delete;
    Sensor& operator=(Sensor const&) = delete;

    nlohmann::json Get(std::string const& path);
    /// Sends a document and returns the answer; null without a body. An unknown member is an error.
    nlohmann::json Change(std::string const& method, std::string const& path, nlohmann::json const& document);
    void Delete(std::string const& path);

    /// As `Get`, without a look at the body.
    HttpAnswer GetText(std::string const& path, bool isTransfer = false);
    using ShowProgress = std::function<void(std::uint64_t sent, std::uint64_t total)>;
    void Upload(std::string const& path, std::string bytes, ShowProgress showProgress);
    /// Reads a stream of events until `take` returns false or the stream ends.
    void Stream(std::string const& path, std::function<bool(nlohmann::json const&)> const& take);

    /// The document of `/health`. Needs no caller.
    nlohmann::json Health();
    /// A document of the sensor. Refuses text that is no JSON or is nested too deeply.
    nlohmann::json Parse(std::string const& text) const;
    /// Requests from now on have this token.
    void UseToken(std::string const& token);
    HttpClient& Client() noexcept;

private:
    HttpAnswer Send(HttpRequest request);
    void LogIn();
    [[noreturn]] void Refuse(HttpAnswer const& answer) const;
    [[noreturn]] void RefuseServer() const;

    HttpClient client;
    Credentials credentials;
    std::string cookie;
    std::string crossSiteToken;
    bool isKnown = false; ///< the server is a ZuControl host
};

} // namespace ZuCtl
