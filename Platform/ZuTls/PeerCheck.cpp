#include "ZuTls/PeerCheck.h"

#include "ZuTls/OpenSsl.h"

#include <openssl/err.h>

#include <algorithm>
#include <memory>

namespace ZuTls
{

namespace
{

void FreeText(void*, void* text, CRYPTO_EX_DATA*, int, long, void*)
{
    delete static_cast<std::string*>(text);
}

int TextIndex()
{
    static int const index = SSL_get_ex_new_index(0, nullptr, nullptr, nullptr, &FreeText);
    return index;
}

std::string List(std::vector<std::string> const& names)
{
    std::string list;
    for (std::string const& name : names)
    {
        list.append(list.empty() ? "" : ", ").append(name);
    }
    return list.empty() ? "no name" : list;
}

/// The name that the certificate must have.
std::string WantedName(X509_STORE_CTX& chain)
{
    X509_VERIFY_PARAM* const rules = X509_STORE_CTX_get0_param(&chain);
    if (char const* const host = X509_VERIFY_PARAM_get0_host(rules, 0))
    {
        return host;
    }
    char* const address = X509_VERIFY_PARAM_get1_ip_asc(rules);
    std::string const text = address == nullptr ? "" : address;
    OPENSSL_free(address);
    return text;
}

/// The reason why the authority's list of revoked certificates cannot be used. OpenSSL does not tell which list it has
/// used: if the authority has several lists, the sentence shows the latest end of all.
std::string FaultOfList(X509_STORE_CTX& chain, X509 const& certificate, std::string const& authority, int error)
{
    std::string const which = "the list of revoked certificates of " + authority;
    if (error == X509_V_ERR_CRL_SIGNATURE_FAILURE)
    {
        return which + " is not signed with the key of this authority";
    }
    int64 begin = 0;
    int64 end = 0;
    STACK_OF(X509_CRL)* const lists = X509_STORE_CTX_get1_crls(&chain, X509_get_issuer_name(&certificate));
    for (int i = 0; i < sk_X509_CRL_num(lists); ++i)
    {
        X509_CRL const& list = *sk_X509_CRL_value(lists, i);
        begin = std::max(begin, BeginOf(list));
        end = std::max(end, EndOf(list).value_or(0));
    }
    sk_X509_CRL_pop_free(lists, &X509_CRL_free);
    return error == X509_V_ERR_CRL_HAS_EXPIRED ? which + " ended on " + DayText(end)
                                               : which + " is valid only from " + DayText(begin);
}

std::string Fault(X509_STORE_CTX& chain)
{
    X509 const* const at = X509_STORE_CTX_get_current_cert(&chain);
    if (at == nullptr)
    {
        return "the certificate cannot be checked";
    }
    Certificate const certificate = FactsOf(*at);
    std::string const who = "the certificate of " + certificate.subject;
    switch (int const error = X509_STORE_CTX_get_error(&chain))
    {
    case X509_V_ERR_CERT_HAS_EXPIRED:
        return who + " ended on " + DayText(certificate.untilUtcSeconds);
    case X509_V_ERR_CERT_NOT_YET_VALID:
        return who + " is valid only from " + DayText(certificate.fromUtcSeconds);
    case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
        return who + " is signed by itself and not by an accepted authority";
    case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
    case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
        return who + " is signed by " + certificate.issuer + ", which is not an accepted authority";
    case X509_V_ERR_CERT_SIGNATURE_FAILURE:
        return who + " is not signed with the key of the accepted authority " + certificate.issuer;
    case X509_V_ERR_HOSTNAME_MISMATCH:
    case X509_V_ERR_IP_ADDRESS_MISMATCH:
        return "the name " + WantedName(chain) + " is not in " + who + ", which has " + List(certificate.names);
    case X509_V_ERR_CERT_REVOKED:
        return who + " is revoked";
    case X509_V_ERR_UNABLE_TO_GET_CRL:
        return who + " cannot be checked: there is no list of revoked certificates of " + certificate.issuer;
    case X509_V_ERR_CRL_HAS_EXPIRED:
    case X509_V_ERR_CRL_NOT_YET_VALID:
    case X509_V_ERR_CRL_SIGNATURE_FAILURE:
        return FaultOfList(chain, *at, certificate.issuer, error);
    case X509_V_ERR_INVALID_PURPOSE:
        return who + " is not made for this purpose";
    default:
        return who + " is refused: " + X509_verify_cert_error_string(error);
    }
}

} // namespace

int CheckPeer(X509_STORE_CTX& chain, int64 utcSeconds)
{
    X509_STORE_CTX_set_time(&chain, 0, utcSeconds);
    if (X509_verify_cert(&chain) == 1)
    {
        return 1;
    }
    ERR_clear_error(); // OpenSSL then reports its own error first, and not a detail of the check
    auto* const connection =
        static_cast<SSL*>(X509_STORE_CTX_get_ex_data(&chain, SSL_get_ex_data_X509_STORE_CTX_idx()));
    auto text = std::make_unique<std::string>(Fault(chain));
    delete static_cast<std::string*>(SSL_get_ex_data(connection, TextIndex()));
    if (SSL_set_ex_data(connection, TextIndex(), text.get()) == 1)
    {
        text.release(); // NOLINT(bugprone-unused-return-value): the connection owns it
    }
    else
    {
        SSL_set_ex_data(connection, TextIndex(), nullptr);
    }
    return 0;
}

std::string const* FaultOfPeer(SSL const& connection)
{
    return static_cast<std::string const*>(SSL_get_ex_data(&connection, TextIndex()));
}

} // namespace ZuTls
