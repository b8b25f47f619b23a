#include "Ctl/Connection/HttpClient.h"

#include "Ctl/Connection/Fingerprint.h"
#include "Ctl/Outcome/Failure.h"

#include <curl/curl.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>

#include <algorithm>
#include <cctype>
#include <exception>
#include <span>
#include <utility>

namespace ZuCtl
{

namespace
{

/// What the callbacks of one request work on.
struct Exchange
{
    CURL* curl;
    HttpRequest const* request;
    HttpAnswer answer;
    bool wasEnded = false; ///< by the receiver
    std::exception_ptr failure;
};

long StatusOf(CURL* curl)
{
    long status = 0;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
    return status;
}

std::size_t TakeBody(char* data, std::size_t size, std::size_t count, void* context)
{
    auto& exchange = *static_cast<Exchange*>(context);
    std::string_view const part(data, size * count);
    try
    {
        if (exchange.request->takePart && StatusOf(exchange.curl) < 300)
        {
            exchange.wasEnded = !exchange.request->takePart(part);
            return exchange.wasEnded ? CURL_WRITEFUNC_ERROR : part.size();
        }
        std::size_t const limit =
            exchange.request->isTransfer ? HttpClient::MAX_BODY_BYTES : HttpClient::MAX_DOCUMENT_BYTES;
        if (exchange.answer.body.size() + part.size() > limit)
        {
            throw Failure(ExitStatus::NOT_A_SENSOR, "The answer of the server is longer than " +
                                                        std::to_string(limit / (1024u * 1024u)) + " MiB");
        }
        exchange.answer.body.append(part);
        return part.size();
    }
    catch (...)
    {
        exchange.failure = std::current_exception(); // no exception may pass through a function in C
        return CURL_WRITEFUNC_ERROR;
    }
}

std::size_t TakeHeader(char* data, std::size_t size, std::size_t count, void* context)
{
    auto& exchange = *static_cast<Exchange*>(context);
    std::string_view line(data, size * count);
    std::size_t const colon = line.find(':');
    if (colon != std::string_view::npos)
    {
        std::string name(line.substr(0, colon));
        std::ranges::transform(name, name.begin(), [](unsigned char letter) { return std::tolower(letter); });
        std::string_view value = line.substr(colon + 1);
        value.remove_prefix(std::min(value.find_first_not_of(' '), value.size()));
        value.remove_suffix(value.size() - std::min(value.find_last_not_of("\r\n ") + 1, value.size()));
        exchange.answer.headers[name] = value;
        if (name == "content-type" && value == "text/event-stream" && !exchange.request->takePart)
        {
            exchange.failure = std::make_exception_ptr(Failure(
                ExitStatus::USAGE, exchange.request->path + " is a stream without an end: see zucontrolctl watch"));
            return 0; // ends the request
        }
    }
    return size * count;
}

int TakeProgress(void* context, curl_off_t, curl_off_t, curl_off_t total, curl_off_t sent)
{
    auto const& exchange = *static_cast<Exchange*>(context);
    exchange.request->showProgress(static_cast<std::uint64_t>(sent), static_cast<std::uint64_t>(total));
    return 0;
}

std::string FingerprintOfCertificate(X509* certificate)
{
    unsigned char* bytes = nullptr;
    int const size = i2d_X509(certificate, &bytes);
    if (size <= 0)
    {
        return "";
    }
    std::string fingerprint = FingerprintOf(std::span(bytes, static_cast<std::size_t>(size)));
    OPENSSL_free(bytes);
    return fingerprint;
}

/// Accepts the one certificate with the fingerprint that `expected` points to.
int CompareCertificate(X509_STORE_CTX* store, void* expected)
{
    X509* const certificate = X509_STORE_CTX_get0_cert(store);
    bool const isRight =
        certificate != nullptr && FingerprintOfCertificate(certificate) == *static_cast<std::string const*>(expected);
    X509_STORE_CTX_set_error(store, isRight ? X509_V_OK : X509_V_ERR_CERT_REJECTED);
    return isRight ? 1 : 0;
}

CURLcode InstallComparison(CURL*, void* context, void* expected)
{
    SSL_CTX_set_cert_verify_callback(static_cast<SSL_CTX*>(context), &CompareCertificate, expected);
    return CURLE_OK;
}

[[noreturn]] void Refuse(CURLcode code, std::string const& url, std::uint32_t timeoutSeconds)
{
    std::string const reason = curl_easy_strerror(code);
    switch (code)
    {
    case CURLE_OPERATION_TIMEDOUT:
        throw Failure(ExitStatus::UNREACHABLE,
                      url + " does not answer within " + std::to_string(timeoutSeconds) + " seconds");
    case CURLE_PEER_FAILED_VERIFICATION:
        throw Failure(ExitStatus::NOT_TRUSTED,
                      "The certificate of " + url +
                          " is not trusted: give --authority or --fingerprint, which the host prints at its start");
    case CURLE_SSL_CACERT_BADFILE:
        throw Failure(ExitStatus::NOT_TRUSTED, "The file of the authority has no certificate");
    case CURLE_SSL_CONNECT_ERROR:
        throw Failure(ExitStatus::NOT_A_SENSOR, url + " does not speak TLS: " + reason);
    case CURLE_URL_MALFORMAT:
        throw Failure(ExitStatus::USAGE, "The path has characters that no path has");
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_BAD_CONTENT_ENCODING:
        throw Failure(ExitStatus::NOT_A_SENSOR, url + " does not speak HTTP: " + reason);
    default:
        throw Failure(ExitStatus::UNREACHABLE, url + " cannot be reached: " + reason);
    }
}

/// The headers of a request as libcurl needs them.
class HeaderList final
{
public:
    explicit HeaderList(std::vector<std::string> const& headers)
    {
        Add("Expect:"); // the host does not answer 100, and libcurl would wait for it
        std::ranges::for_each(headers, [this](std::string const& header) { Add(header); });
    }
    ~HeaderList()
    {
        curl_slist_free_all(list);
    }
    HeaderList(HeaderList const&) = delete;
    HeaderList& operator=(HeaderList const&) = delete;

    curl_slist* Get() const noexcept
    {
        return list;
    }

private:
    void Add(std::string const& header)
    {
        if (curl_slist* const longer = curl_slist_append(list, header.c_str()); longer != nullptr)
        {
            list = longer;
        }
    }

    curl_slist* list = nullptr;
};

} // namespace

struct HttpClient::Handle
{
    Handle() : curl(curl_easy_init())
    {
        if (curl == nullptr)
        {
            throw Failure(ExitStatus::LOCAL_FILE, "libcurl cannot be used");
        }
    }
    ~Handle()
    {
        curl_easy_cleanup(curl);
    }
    Handle(Handle const&) = delete;
    Handle& operator=(Handle const&) = delete;

    /// Sets what all requests have in common. Connections stay open from request to request.
    void Prepare(HttpSettings const& settings) const
    {
        curl_easy_reset(curl);
        curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
        curl_easy_setopt(curl, CURLOPT_PROXY, "");
        curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");
        curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, static_cast<long>(settings.timeoutSeconds));
        curl_easy_setopt(curl, CURLOPT_SSLVERSION, CURL_SSLVERSION_TLSv1_2);
        if (!settings.authorityPem.empty())
        {
            curl_blob const authority{const_cast<char*>(settings.authorityPem.data()), settings.authorityPem.size(),
                                      CURL_BLOB_COPY};
            curl_easy_setopt(curl, CURLOPT_CAINFO_BLOB, &authority);
            curl_easy_setopt(curl, CURLOPT_CAPATH, nullptr);
        }
        else if (!settings.fingerprint.empty())
        {
            // The comparison takes the place of the checks of names and authorities.
            curl_easy_setopt(curl, CURLOPT_SSL_VERIFYHOST, 0L);
            curl_easy_setopt(curl, CURLOPT_CAINFO, nullptr);
            curl_easy_setopt(curl, CURLOPT_CAPATH, nullptr);
            curl_easy_setopt(curl, CURLOPT_SSL_CTX_FUNCTION, &InstallComparison);
            curl_easy_setopt(curl, CURLOPT_SSL_CTX_DATA, &settings.fingerprint);
        }
    }

    void SetRequest(HttpRequest const& request, std::string const& url, HeaderList const& headers,
                    Exchange& exchange) const
    {
        curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
        curl_easy_setopt(curl, CURLOPT_PATH_AS_IS, 1L); // the name ".." of a job must not address another document
        curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers.Get());
        curl_easy_setopt(curl, CURLOPT_CUSTOMREQUEST, request.method.c_str());
        if (request.method != "GET" && (request.method != "DELETE" || !request.body.empty()))
        {
            curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
            curl_easy_setopt(curl, CURLOPT_POSTFIELDS, request.body.data());
        }
        curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &TakeBody);
        curl_easy_setopt(curl, CURLOPT_WRITEDATA, &exchange);
        curl_easy_setopt(curl, CURLOPT_HEADERFUNCTION, &TakeHeader);
        curl_easy_setopt(curl, CURLOPT_HEADERDATA, &exchange);
        if (request.showProgress)
        {
            curl_easy_setopt(curl, CURLOPT_XFERINFOFUNCTION, &TakeProgress);
            curl_easy_setopt(curl, CURLOPT_XFERINFODATA, &exchange);
            curl_easy_setopt(curl, CURLOPT_NOPROGRESS, 0L);
        }
    }

    void SetTime(HttpRequest const& request, std::uint32_t timeoutSeconds) const
    {
        if (!request.isTransfer)
        {
            curl_easy_setopt(curl, CURLOPT_TIMEOUT, static_cast<long>(timeoutSeconds));
            return;
        }
        // A stream without news has a comment every 15 seconds, unless the host was started with another interval.
        long const silence = request.takePart ? std::max(60L, static_cast<long>(timeoutSeconds)) : timeoutSeconds;
        curl_easy_setopt(curl, CURLOPT_LOW_SPEED_LIMIT, 1L);
        curl_easy_setopt(curl, CURLOPT_LOW_SPEED_TIME, silence);
    }

    CURL* curl;
};

std::string HttpAnswer::Header(std::string const& name) const
{
    auto const found = headers.find(name);
    return found != headers.end() ? found->second : "";
}

HttpClient::HttpClient(HttpSettings newSettings) : settings(std::move(newSettings)), handle(std::make_unique<Handle>())
{
    if (!settings.fingerprint.empty())
    {
        settings.fingerprint = NormalFingerprint(settings.fingerprint);
        SettleTrust();
    }
}

HttpClient::~HttpClient() = default;

void HttpClient::SettleTrust()
{
    if (!settings.address.isEncrypted || !settings.authorityPem.empty())
    {
        return;
    }
    HttpRequest request;
    request.path = "/authority";
    std::string const url = settings.address.Url() + request.path;
    Exchange exchange{handle->curl, &request, {}, false, nullptr};
    HeaderList const headers({});
    HttpSettings untrusted = settings;
    untrusted.fingerprint.clear();
    handle->Prepare(untrusted);
    curl_easy_setopt(handle->curl, CURLOPT_SSL_VERIFYPEER, 0L);
    curl_easy_setopt(handle->curl, CURLOPT_SSL_VERIFYHOST, 0L);
    curl_easy_setopt(handle->curl, CURLOPT_FORBID_REUSE, 1L);
    handle->SetRequest(request, url, headers, exchange);
    handle->SetTime(request, settings.timeoutSeconds);
    if (curl_easy_perform(handle->curl) == CURLE_OK && FingerprintOfPem(exchange.answer.body) == settings.fingerprint)
    {
        settings.authorityPem = exchange.answer.body;
    }
}

HttpAnswer HttpClient::Send(HttpRequest const& request)
{
    std::string const url = settings.address.Url() + request.path;
    HeaderList const headers(request.headers);
    Exchange exchange{handle->curl, &request, {}, false, nullptr};
    handle->Prepare(settings);
    handle->SetRequest(request, url, headers, exchange);
    handle->SetTime(request, settings.timeoutSeconds);

    CURLcode const code = curl_easy_perform(handle->curl);
    if (exchange.failure)
    {
        std::rethrow_exception(exchange.failure);
    }
    if (code != CURLE_OK && !exchange.wasEnded)
    {
        Refuse(code, settings.address.Url(), settings.timeoutSeconds);
    }
    exchange.answer.status = static_cast<int>(StatusOf(handle->curl));
    return std::move(exchange.answer);
}

Address const& HttpClient::ServerAddress() const noexcept
{
    return settings.address;
}

HttpClient::Certificate HttpClient::ShowCertificate()
{
    Certificate shown;
    if (!settings.address.isEncrypted)
    {
        return shown;
    }
    HttpRequest request;
    std::string const url = settings.address.Url() + "/health";
    HeaderList const headers({});
    Exchange exchange{handle->curl, &request, {}, false, nullptr};
    handle->Prepare(settings);
    handle->SetRequest(request, url, headers, exchange);
    handle->SetTime(request, settings.timeoutSeconds);
    curl_easy_setopt(handle->curl, CURLOPT_CERTINFO, 1L);
    curl_easy_setopt(handle->curl, CURLOPT_FRESH_CONNECT, 1L);
    if (CURLcode const code = curl_easy_perform(handle->curl); code != CURLE_OK)
    {
        Refuse(code, settings.address.Url(), settings.timeoutSeconds);
    }
    curl_certinfo* chain = nullptr;
    curl_easy_getinfo(handle->curl, CURLINFO_CERTINFO, &chain);
    for (curl_slist const* line = chain->num_of_certs > 0 ? chain->certinfo[0] : nullptr; line != nullptr;
         line = line->next)
    {
        std::string const text = line->data;
        if (text.starts_with("Expire date:"))
        {
            shown.end = text.substr(text.find(':') + 1);
        }
        else if (text.starts_with("Cert:"))
        {
            shown.fingerprint = FingerprintOfPem(text);
        }
    }
    return shown;
}

} // namespace ZuCtl
