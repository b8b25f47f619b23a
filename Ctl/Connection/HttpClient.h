#pragma once

#include "Ctl/Connection/Address.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ZuCtl
{

struct HttpSettings
{
    Address address;
    std::uint32_t timeoutSeconds = 15; ///< of a connection, of an answer, and of silence within a long transfer
    std::string authorityPem;          ///< the only authority to trust; empty: those of the system
    std::string fingerprint; ///< of the certificate or the authority of the server; empty: names and authorities decide
};

struct HttpRequest
{
    std::string method = "GET";
    std::string path;
    std::string body;
    std::vector<std::string> headers; ///< "Name: value"
    /// A transfer may take any time as long as bytes flow. Each other request has to end within the timeout.
    bool isTransfer = false;
    /// Gets the body in parts, which then is not in the answer, if the status is below 300. Returns whether to go on.
    std::function<bool(std::string_view)> takePart;
    std::function<void(std::uint64_t sent, std::uint64_t total)> showProgress;
};

struct HttpAnswer
{
    int status = 0;
    std::map<std::string, std::string> headers; ///< names in small letters
    std::string body;

    std::string Header(std::string const& name) const; ///< empty without it
};

/// Sends HTTP requests to one server. It uses no proxy and follows no redirection: a token goes to the named server alone.
///
/// Not thread-safe. Failures are `Failure` with `ExitStatus::UNREACHABLE`, `NOT_TRUSTED` or `NOT_A_SENSOR`.
class HttpClient final
{
public:
    static constexpr std::size_t MAX_BODY_BYTES = 512u * 1024u * 1024u;    ///< of a transfer
    static constexpr std::size_t MAX_DOCUMENT_BYTES = 16u * 1024u * 1024u; ///< of each other answer

    explicit HttpClient(HttpSettings newSettings);
    ~HttpClient();
    HttpClient(HttpClient const&) = delete;
    HttpClient& operator=(HttpClient const&) = delete;

    HttpAnswer Send(HttpRequest const& request);
    Address const& ServerAddress() const noexcept;

    /// The end of the server's certificate, such as "Mar  1 12:00:00 2029 GMT", and its fingerprint. Empty without TLS.
    struct Certificate
    {
        std::string end;
        std::string fingerprint;
    };
    Certificate ShowCertificate();

private:
    struct Handle;

    /// With a fingerprint: takes the authority from the server if the fingerprint is that of the authority.
    void SettleTrust();

    HttpSettings settings;
    std::unique_ptr<Handle> handle;
};

} // namespace ZuCtl
