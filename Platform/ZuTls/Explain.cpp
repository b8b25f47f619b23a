#include "ZuTls/Context.h"
#include "ZuTls/PeerCheck.h"

#include <openssl/err.h>
#include <openssl/ssl.h>

#include <algorithm>
#include <array>
#include <utility>

namespace ZuTls
{

namespace
{

constexpr std::array REASONS{
    std::pair{SSL_R_PEER_DID_NOT_RETURN_A_CERTIFICATE, "the peer shows no certificate"},
    std::pair{SSL_R_HTTP_REQUEST, "the peer sends plain HTTP to a TLS port"},
    std::pair{SSL_R_HTTPS_PROXY_REQUEST, "the peer sends plain HTTP to a TLS port"},
    std::pair{SSL_R_WRONG_VERSION_NUMBER, "the peer does not speak TLS"},
    std::pair{SSL_R_UNKNOWN_PROTOCOL, "the peer does not speak TLS"},
    std::pair{SSL_R_PACKET_LENGTH_TOO_LONG, "the peer does not speak TLS"},
    std::pair{SSL_R_BAD_RECORD_TYPE, "the peer does not speak TLS"},
    std::pair{SSL_R_UNSUPPORTED_PROTOCOL, "the peer wants a version of TLS that is not accepted: 1.2 and 1.3 are"},
    std::pair{SSL_R_VERSION_TOO_LOW, "the peer wants a version of TLS that is not accepted: 1.2 and 1.3 are"},
    std::pair{SSL_R_TLSV1_ALERT_PROTOCOL_VERSION, "the peer does not accept TLS 1.2 or 1.3"},
    std::pair{SSL_R_NO_SHARED_CIPHER, "the peer offers no accepted cipher suite"},
    std::pair{SSL_R_NO_SHARED_GROUPS, "the peer offers no accepted group for the key exchange"},
    std::pair{SSL_R_SSLV3_ALERT_HANDSHAKE_FAILURE, "the peer found no common cipher suite or wants a certificate"},
    std::pair{SSL_R_TLSV1_ALERT_UNKNOWN_CA, "the peer does not trust the authority of our certificate"},
    std::pair{SSL_R_SSLV3_ALERT_CERTIFICATE_EXPIRED, "for the peer our certificate has ended or has not begun"},
    std::pair{SSL_R_SSLV3_ALERT_CERTIFICATE_UNKNOWN, "the peer refuses our certificate"},
    std::pair{SSL_R_SSLV3_ALERT_BAD_CERTIFICATE, "the peer refuses our certificate"},
    std::pair{SSL_R_SSLV3_ALERT_UNSUPPORTED_CERTIFICATE, "the peer refuses our certificate"},
    std::pair{SSL_R_TLSV1_ALERT_ACCESS_DENIED, "the peer refuses our certificate"},
    std::pair{SSL_R_TLSV1_ALERT_DECRYPT_ERROR, "the peer refuses our certificate"},
    std::pair{SSL_R_TLSV13_ALERT_CERTIFICATE_REQUIRED, "the peer wants a certificate from us"},
    std::pair{SSL_R_EE_KEY_TOO_SMALL, "the key of the peer's certificate is too short"},
    std::pair{SSL_R_CA_KEY_TOO_SMALL, "the key of an authority of the peer's certificate is too short"},
    std::pair{SSL_R_CA_MD_TOO_WEAK, "the signature of the peer's certificate is outdated"},
    std::pair{SSL_R_UNEXPECTED_EOF_WHILE_READING, "the peer closed the connection during the handshake"},
};

} // namespace

std::string Explain(uint64 opensslError, ssl_st const& connection)
{
    int const reason = ERR_GET_REASON(opensslError);
    if (ERR_GET_LIB(opensslError) == ERR_LIB_SSL)
    {
        std::string const* const fault = FaultOfPeer(connection);
        if (reason == SSL_R_CERTIFICATE_VERIFY_FAILED && fault != nullptr)
        {
            return *fault;
        }
        auto const* const found =
            std::find_if(REASONS.begin(), REASONS.end(), [reason](auto const& entry) { return entry.first == reason; });
        if (found != REASONS.end())
        {
            return found->second;
        }
    }
    char const* const text = ERR_reason_error_string(opensslError);
    return text == nullptr ? "the connection broke during the handshake" : text;
}

} // namespace ZuTls
