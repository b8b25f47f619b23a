#include "ZuTls/Context.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "ZuTls/OpenSsl.h"
#include "ZuTls/PeerCheck.h"
#include "ZuTls/TicketKeys.h"
#include "wApi/wTime.h"

#include <openssl/err.h>

#include <chrono>
#include <utility>

namespace ZuTls
{

namespace
{

constexpr char const* SUITES_OF_1_2 = "ECDHE-ECDSA-AES256-GCM-SHA384:ECDHE-RSA-AES256-GCM-SHA384:"
                                      "ECDHE-ECDSA-CHACHA20-POLY1305:ECDHE-RSA-CHACHA20-POLY1305:"
                                      "ECDHE-ECDSA-AES128-GCM-SHA256:ECDHE-RSA-AES128-GCM-SHA256";
constexpr char const* SUITES_OF_1_3 = "TLS_AES_256_GCM_SHA384:TLS_CHACHA20_POLY1305_SHA256:TLS_AES_128_GCM_SHA256";
constexpr char const* GROUPS = "X25519:P-256:P-384";
constexpr char const* SIGNATURES = "ECDSA+SHA256:ECDSA+SHA384:ECDSA+SHA512:ed25519:RSA-PSS+SHA256:RSA-PSS+SHA384:"
                                   "RSA-PSS+SHA512:RSA+SHA256:RSA+SHA384:RSA+SHA512";
constexpr int SECURITY_LEVEL = 2; // of OpenSSL: keys of 112 bits, which is RSA of 2048 bits
constexpr int MAX_CHAIN = 6;

/// The data of the callbacks of a context. The inner OpenSSL object owns it.
struct State
{
    explicit State(Clock newClock) : clock(std::move(newClock)), tickets(clock.monotonicUsec)
    {
    }

    Clock const clock;
    TicketKeys tickets;
};

void FreeState(void*, void* state, CRYPTO_EX_DATA*, int, long, void*)
{
    delete static_cast<State*>(state);
}

int StateIndex()
{
    static int const index = SSL_CTX_get_ex_new_index(0, nullptr, nullptr, nullptr, &FreeState);
    return index;
}

int OnTicket(SSL* connection, unsigned char* name, unsigned char* initialVector, EVP_CIPHER_CTX* cipher,
             EVP_MAC_CTX* mac, int seals)
{
    auto* const state = static_cast<State*>(SSL_CTX_get_ex_data(SSL_get_SSL_CTX(connection), StateIndex()));
    int result = -1;
    ZU_GUARD_BOUNDARY([&] {
        result = seals == 1 ? state->tickets.Seal(name, initialVector, *cipher, *mac)
                            : state->tickets.Open(name, initialVector, *cipher, *mac);
    });
    return result;
}

int OnPeer(X509_STORE_CTX* chain, void* state)
{
    int result = 0;
    ZU_GUARD_BOUNDARY([&] { result = CheckPeer(*chain, static_cast<State*>(state)->clock.utcSeconds()); });
    return result;
}

Clock Complete(Clock clock)
{
    if (!clock.utcSeconds)
    {
        clock.utcSeconds = [] {
            return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch())
                .count();
        };
    }
    if (!clock.monotonicUsec)
    {
        clock.monotonicUsec = &wTime_NowUsec;
    }
    return clock;
}

void CheckValidity(Certificate const& certificate, std::filesystem::path const& file, int64 utcSeconds)
{
    if (utcSeconds >= certificate.untilUtcSeconds) // as OpenSSL does for peers
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "the certificate %s ended on %s", file.c_str(),
                 DayText(certificate.untilUtcSeconds).c_str());
    }
    if (utcSeconds < certificate.fromUtcSeconds)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "the certificate %s is valid only from %s", file.c_str(),
                 DayText(certificate.fromUtcSeconds).c_str());
    }
}

void CheckValidity(X509_CRL const& list, std::filesystem::path const& file, int64 utcSeconds)
{
    if (std::optional<int64> const end = EndOf(list); end.has_value() && utcSeconds >= *end)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "the list of revoked certificates %s of %s ended on %s", file.c_str(),
                 IssuerOf(list).c_str(), DayText(*end).c_str());
    }
    if (utcSeconds < BeginOf(list))
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "the list of revoked certificates %s of %s is valid only from %s",
                 file.c_str(), IssuerOf(list).c_str(), DayText(BeginOf(list)).c_str());
    }
}

/// Fills a new context.
class Maker final
{
public:
    Maker(Side newSide, Settings const& newSettings, Clock const& clock)
        : side(newSide), settings(newSettings), context(NotNull(SSL_CTX_new(TLS_method())), &SSL_CTX_free)
    {
        auto newState = std::make_unique<State>(Complete(clock));
        Must(SSL_CTX_set_ex_data(context.get(), StateIndex(), newState.get()));
        state = newState.release();
    }

    std::shared_ptr<ssl_ctx_st> Make(std::optional<Certificate>& own)
    {
        SetRules();
        SetOwn(own);
        SetPeer();
        if (side == Side::SERVER)
        {
            SetTickets();
        }
        ERR_clear_error();
        return context;
    }

private:
    /// For calls that fail for lack of memory, or if OpenSSL lacks an algorithm of this source.
    static void Must(long result)
    {
        if (result != 1)
        {
            unsigned long const error = ERR_get_error();
            ERR_clear_error();
            char const* const reason = ERR_reason_error_string(error);
            ZU_THROW(Zu::Status::FAILURE, "TLS cannot be set up: %s", reason == nullptr ? "no reason" : reason);
        }
    }

    void SetRules()
    {
        SSL_CTX* const native = context.get();
        SSL_CTX_set_security_level(native, SECURITY_LEVEL);
        Must(SSL_CTX_set_min_proto_version(native, TLS1_2_VERSION));
        Must(SSL_CTX_set_cipher_list(native, SUITES_OF_1_2));
        Must(SSL_CTX_set_ciphersuites(native, SUITES_OF_1_3));
        Must(SSL_CTX_set1_groups_list(native, GROUPS));
        Must(SSL_CTX_set1_sigalgs_list(native, SIGNATURES));
        SSL_CTX_set_options(native, SSL_OP_NO_RENEGOTIATION | SSL_OP_NO_COMPRESSION | SSL_OP_CIPHER_SERVER_PREFERENCE |
                                        SSL_OP_PRIORITIZE_CHACHA);
        SSL_CTX_set_mode(native, SSL_MODE_RELEASE_BUFFERS | SSL_MODE_NO_AUTO_CHAIN);
    }

    void SetOwn(std::optional<Certificate>& own)
    {
        if (settings.certificateFile.empty() && settings.keyFile.empty() && side == Side::CLIENT)
        {
            return;
        }
        if (settings.certificateFile.empty() || settings.keyFile.empty())
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "a certificate and its key are needed, each in a file");
        }
        std::vector<X509Ref> const chain = ReadCertificates(settings.certificateFile);
        for (X509Ref const& certificate : chain)
        {
            CheckValidity(FactsOf(*certificate), settings.certificateFile, state->clock.utcSeconds());
        }
        CheckPurpose(*chain.front());
        Key const key = ReadKey(settings.keyFile);
        if (X509_check_private_key(chain.front().get(), key.get()) != 1)
        {
            ERR_clear_error();
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "the key %s does not belong to the certificate %s",
                     settings.keyFile.c_str(), settings.certificateFile.c_str());
        }
        own = FactsOf(*chain.front());
        Use(chain, *key);
    }

    void CheckPurpose(X509& certificate) const
    {
        bool const isServer = side == Side::SERVER;
        if (X509_check_purpose(&certificate, isServer ? X509_PURPOSE_SSL_SERVER : X509_PURPOSE_SSL_CLIENT, 0) != 1)
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "the certificate %s is not made for %s",
                     settings.certificateFile.c_str(), isServer ? "servers" : "clients");
        }
    }

    void Use(std::vector<X509Ref> const& chain, EVP_PKEY& key) const
    {
        SSL_CTX* const native = context.get();
        if (SSL_CTX_use_certificate(native, chain.front().get()) != 1)
        {
            ERR_clear_error();
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "the certificate %s is too weak: its key or its signature is outdated",
                     settings.certificateFile.c_str());
        }
        for (std::size_t i = 1; i < chain.size(); ++i)
        {
            if (SSL_CTX_add1_chain_cert(native, chain[i].get()) != 1)
            {
                ERR_clear_error();
                ZU_THROW(Zu::Status::BAD_ARGUMENT, "%s: the key or the signature of an authority in it is outdated",
                         settings.certificateFile.c_str());
            }
        }
        Must(SSL_CTX_use_PrivateKey(native, &key));
    }

    void SetPeer()
    {
        SSL_CTX* const native = context.get();
        SSL_CTX_set_verify_depth(native, MAX_CHAIN);
        SSL_CTX_set_cert_verify_callback(native, &OnPeer, state);
        if (settings.peerProof == PeerProof::NOTHING)
        {
            SSL_CTX_set_verify(native, SSL_VERIFY_NONE, nullptr);
            return;
        }
        SSL_CTX_set_verify(native, SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT, nullptr);
        SetAuthorities();
        SetRevocations();
        if (!settings.peerName.empty())
        {
            X509_VERIFY_PARAM* const rules = SSL_CTX_get0_param(native);
            X509_VERIFY_PARAM_set_hostflags(rules, X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
            if (X509_VERIFY_PARAM_set1_ip_asc(rules, settings.peerName.c_str()) != 1) // no address: a name
            {
                Must(X509_VERIFY_PARAM_set1_host(rules, settings.peerName.data(), settings.peerName.size()));
            }
        }
    }

    void SetAuthorities()
    {
        if (settings.authoritiesFile.empty() && side == Side::CLIENT)
        {
            Must(SSL_CTX_set_default_verify_paths(context.get()));
            return;
        }
        if (settings.authoritiesFile.empty())
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT,
                     "to ask clients for certificates takes a file with the authorities that sign them");
        }
        for (X509Ref const& authority : ReadCertificates(settings.authoritiesFile))
        {
            Must(X509_STORE_add_cert(SSL_CTX_get_cert_store(context.get()), authority.get()));
            if (side == Side::SERVER)
            {
                Must(SSL_CTX_add_client_CA(context.get(), authority.get()));
            }
        }
    }

    void SetRevocations()
    {
        if (settings.revocationsFile.empty())
        {
            return;
        }
        X509_STORE* const store = SSL_CTX_get_cert_store(context.get());
        for (CrlRef const& list : ReadRevocations(settings.revocationsFile))
        {
            CheckValidity(*list, settings.revocationsFile, state->clock.utcSeconds());
            Must(X509_STORE_add_crl(store, list.get()));
        }
        Must(X509_STORE_set_flags(store, X509_V_FLAG_CRL_CHECK)); // of the peer's certificate, not of its authorities
    }

    void SetTickets()
    {
        SSL_CTX* const native = context.get();
        SSL_CTX_set_session_cache_mode(native, SSL_SESS_CACHE_OFF);
        if (settings.peerProof == PeerProof::CERTIFICATE)
        {
            SSL_CTX_set_options(native, SSL_OP_NO_TICKET);
            Must(SSL_CTX_set_num_tickets(native, 0));
            return;
        }
        Must(SSL_CTX_set_tlsext_ticket_key_evp_cb(native, &OnTicket));
        Must(SSL_CTX_set_num_tickets(native, 1));
        SSL_CTX_set_timeout(native, static_cast<long>(TicketKeys::PERIOD_USEC / 1'000'000));
    }

    Side const side;
    Settings const& settings;
    std::shared_ptr<ssl_ctx_st> const context;
    State* state = nullptr;
};

} // namespace

Context::Context(Side side, Settings const& settings, Clock const& clock)
    : peerName(side == Side::CLIENT ? settings.peerName : ""), native(Maker(side, settings, clock).Make(own))
{
}

Context::~Context() = default;

ssl_ctx_st* Context::Native() const noexcept
{
    return native.get();
}

void Context::Prepare(ssl_st& connection) const
{
    bool const isAddress = peerName.find_first_not_of("0123456789.") == std::string::npos ||
                           peerName.find(':') != std::string::npos; // addresses are not sent
    if (!peerName.empty() && !isAddress)
    {
        SSL_set_tlsext_host_name(&connection, peerName.c_str());
    }
}

std::optional<Certificate> const& Context::Own() const noexcept
{
    return own;
}

} // namespace ZuTls
