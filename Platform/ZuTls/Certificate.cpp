#include "ZuTls/Certificate.h"

#include "ZuApi/Exception.h"
#include "ZuTls/OpenSsl.h"

#include <openssl/err.h>
#include <openssl/pem.h>

#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ZuTls
{

namespace
{

constexpr std::size_t MAX_FILE_BYTES = 1024 * 1024;
constexpr int MIN_KEY_SECURITY_BITS = 112; // RSA of 2048 bits, an elliptic curve of 224 bits

std::string TextOf(Bio const& bio)
{
    char* bytes = nullptr;
    long const count = BIO_get_mem_data(bio.get(), &bytes);
    return {bytes, static_cast<std::size_t>(count)};
}

std::string TextOf(X509_NAME const* name)
{
    Bio const text = NotNull(Bio(BIO_new(BIO_s_mem())));
    X509_NAME_print_ex(text.get(), name, 0, XN_FLAG_RFC2253 & ~static_cast<unsigned long>(ASN1_STRFLGS_ESC_MSB));
    return TextOf(text);
}

int64 SecondsOf(ASN1_TIME const* time)
{
    std::tm parts{};
    ASN1_TIME_to_tm(time, &parts);
    return timegm(&parts);
}

std::string AddressText(ASN1_OCTET_STRING const* address)
{
    std::array<char, INET6_ADDRSTRLEN> text{};
    int const family = ASN1_STRING_length(address) == 4 ? AF_INET : AF_INET6;
    bool const isAddress = ASN1_STRING_length(address) == 4 || ASN1_STRING_length(address) == 16;
    return isAddress && inet_ntop(family, ASN1_STRING_get0_data(address), text.data(), text.size()) != nullptr
               ? text.data()
               : "";
}

std::vector<std::string> NamesOf(X509 const& certificate)
{
    std::vector<std::string> names;
    auto* const all =
        static_cast<GENERAL_NAMES*>(X509_get_ext_d2i(&certificate, NID_subject_alt_name, nullptr, nullptr));
    for (int i = 0; i < sk_GENERAL_NAME_num(all); ++i)
    {
        GENERAL_NAME const* const name = sk_GENERAL_NAME_value(all, i);
        if (name->type == GEN_DNS)
        {
            names.emplace_back(reinterpret_cast<char const*>(ASN1_STRING_get0_data(name->d.dNSName)),
                               static_cast<std::size_t>(ASN1_STRING_length(name->d.dNSName)));
        }
        else if (name->type == GEN_IPADD)
        {
            names.push_back(AddressText(name->d.iPAddress));
        }
    }
    GENERAL_NAMES_free(all);
    return names;
}

std::string FingerprintOf(X509 const& certificate)
{
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int count = 0;
    X509_digest(&certificate, EVP_sha256(), digest.data(), &count);
    std::string text = "SHA256";
    for (unsigned int i = 0; i < count; ++i)
    {
        std::array<char, 4> byte{};
        std::snprintf(byte.data(), byte.size(), ":%02X", unsigned{digest[i]});
        text += byte.data();
    }
    return text;
}

std::string DerOf(X509 const& certificate)
{
    unsigned char* bytes = nullptr;
    int const count = i2d_X509(&certificate, &bytes);
    std::string der(reinterpret_cast<char const*>(bytes), count > 0 ? static_cast<std::size_t>(count) : 0);
    OPENSSL_free(bytes);
    return der;
}

/// Null if the bytes are no certificate, or more than one.
X509Ref Decode(std::string const& der)
{
    auto const* bytes = reinterpret_cast<unsigned char const*>(der.data());
    X509Ref certificate(d2i_X509(nullptr, &bytes, static_cast<long>(der.size())));
    bool const isWhole =
        certificate != nullptr && bytes == reinterpret_cast<unsigned char const*>(der.data()) + der.size();
    ERR_clear_error();
    return isWhole ? std::move(certificate) : nullptr;
}

bool IsUtf8Text(std::string const& text)
{
    if (text.find('\0') != std::string::npos)
    {
        return false;
    }
    auto const* at = reinterpret_cast<unsigned char const*>(text.data());
    for (std::size_t left = text.size(); left != 0;)
    {
        unsigned long character = 0;
        int const count = UTF8_getc(at, static_cast<int>(left), &character);
        if (count <= 0)
        {
            return false;
        }
        at += count;
        left -= static_cast<std::size_t>(count);
    }
    return true;
}

std::optional<std::string> Utf8Of(ASN1_OCTET_STRING const* value)
{
    auto const* const begin = ASN1_STRING_get0_data(value);
    auto const* at = begin;
    int const size = ASN1_STRING_length(value);
    ASN1_UTF8STRING* const decoded = d2i_ASN1_UTF8STRING(nullptr, &at, size);
    std::optional<std::string> text;
    if (decoded != nullptr && at == begin + size)
    {
        text.emplace(reinterpret_cast<char const*>(ASN1_STRING_get0_data(decoded)),
                     static_cast<std::size_t>(ASN1_STRING_length(decoded)));
    }
    ASN1_UTF8STRING_free(decoded);
    ERR_clear_error();
    return text.has_value() && IsUtf8Text(*text) ? text : std::nullopt;
}

/// The bytes of a file. `what` names the file's purpose in the sentence of the exception.
std::string ReadAll(std::filesystem::path const& file, char const* what, bool isSecret)
{
    int const descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK); // a pipe must not block the start
    struct stat facts
    {
    };
    std::string bytes;
    int fault = descriptor == -1 || fstat(descriptor, &facts) != 0 ? errno : 0;
    if (fault == 0 && S_ISDIR(facts.st_mode))
    {
        fault = EISDIR;
    }
    if (fault == 0)
    {
        bytes.resize(MAX_FILE_BYTES);
        ssize_t const count = read(descriptor, bytes.data(), bytes.size());
        fault = count < 0 ? errno : 0;
        bytes.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    if (descriptor != -1)
    {
        close(descriptor);
    }
    if (fault != 0)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "the %s %s cannot be read: %s", what, file.c_str(), std::strerror(fault));
    }
    if (isSecret && (facts.st_mode & (S_IROTH | S_IWOTH)) != 0)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT,
                 "the %s %s can be read or changed by every user: take that away with chmod o= %s", what, file.c_str(),
                 file.c_str());
    }
    return bytes;
}

Bio BioOf(std::string const& bytes)
{
    return NotNull(Bio(BIO_new_mem_buf(bytes.data(), static_cast<int>(bytes.size()))));
}

/// Reads all blocks of one kind from a PEM file. `what` names the kind in the sentences of exceptions.
template <typename Block>
std::vector<Block> ReadBlocks(std::filesystem::path const& file, char const* what,
                              typename Block::pointer (*read)(BIO*, typename Block::pointer*, pem_password_cb*, void*))
{
    std::string const bytes = ReadAll(file, what, false);
    Bio const bio = BioOf(bytes);
    std::vector<Block> blocks;
    while (Block block{read(bio.get(), nullptr, nullptr, nullptr)})
    {
        blocks.push_back(std::move(block));
    }
    bool const isAtEnd = ERR_GET_REASON(ERR_peek_last_error()) == PEM_R_NO_START_LINE;
    ERR_clear_error();
    if (!isAtEnd)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "%s: a %s in it is damaged", file.c_str(), what);
    }
    if (blocks.empty())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "%s: there is no %s in it", file.c_str(), what);
    }
    return blocks;
}

/// Gives no password, and notes that one was asked for.
int RefusePassword(char*, int, int, void* isAsked)
{
    *static_cast<bool*>(isAsked) = true;
    return -1;
}

} // namespace

Certificate::Certificate() = default;
Certificate::~Certificate() = default;
Certificate::Certificate(Certificate const&) = default;
Certificate::Certificate(Certificate&&) noexcept = default;
Certificate& Certificate::operator=(Certificate const&) = default;
Certificate& Certificate::operator=(Certificate&&) noexcept = default;

std::optional<std::string> Certificate::TextExtension(std::string const& oid) const
{
    X509Ref const certificate = Decode(der);
    ASN1_OBJECT* const object = OBJ_txt2obj(oid.c_str(), 1);
    std::optional<std::string> text;
    if (certificate != nullptr && object != nullptr)
    {
        int const at = X509_get_ext_by_OBJ(certificate.get(), object, -1);
        if (at >= 0 && X509_get_ext_by_OBJ(certificate.get(), object, at) < 0)
        {
            text = Utf8Of(X509_EXTENSION_get_data(X509_get_ext(certificate.get(), at)));
        }
    }
    ASN1_OBJECT_free(object);
    ERR_clear_error();
    return text;
}

Certificate Certificate::FromDer(std::string const& bytes)
{
    X509Ref const certificate = Decode(bytes);
    if (certificate == nullptr)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "the bytes are no certificate");
    }
    return FactsOf(*certificate);
}

std::vector<Certificate> Certificate::ReadFile(std::filesystem::path const& file)
{
    std::vector<Certificate> facts;
    for (X509Ref const& certificate : ReadCertificates(file))
    {
        facts.push_back(FactsOf(*certificate));
    }
    return facts;
}

std::optional<Certificate> Certificate::OfPeer(ssl_st const& connection)
{
    X509 const* const certificate = SSL_get0_peer_certificate(&connection);
    return certificate == nullptr ? std::nullopt : std::optional(FactsOf(*certificate));
}

std::string DayText(int64 utcSeconds)
{
    std::time_t const seconds = utcSeconds;
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    std::array<char, 64> text{};
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d", &parts)};
}

Certificate FactsOf(X509 const& certificate)
{
    Certificate facts;
    facts.subject = TextOf(X509_get_subject_name(&certificate));
    facts.issuer = TextOf(X509_get_issuer_name(&certificate));
    facts.names = NamesOf(certificate);
    facts.fingerprint = FingerprintOf(certificate);
    facts.der = DerOf(certificate);
    facts.fromUtcSeconds = SecondsOf(X509_get0_notBefore(&certificate));
    facts.untilUtcSeconds = SecondsOf(X509_get0_notAfter(&certificate));
    facts.isAuthority = X509_check_ca(const_cast<X509*>(&certificate)) != 0; // it caches what it has decoded
    return facts;
}

std::vector<X509Ref> ReadCertificates(std::filesystem::path const& file)
{
    return ReadBlocks<X509Ref>(file, "certificate", &PEM_read_bio_X509);
}

std::vector<CrlRef> ReadRevocations(std::filesystem::path const& file)
{
    return ReadBlocks<CrlRef>(file, "list of revoked certificates", &PEM_read_bio_X509_CRL);
}

std::string IssuerOf(X509_CRL const& list)
{
    return TextOf(X509_CRL_get_issuer(&list));
}

int64 BeginOf(X509_CRL const& list)
{
    return SecondsOf(X509_CRL_get0_lastUpdate(&list));
}

std::optional<int64> EndOf(X509_CRL const& list)
{
    ASN1_TIME const* const end = X509_CRL_get0_nextUpdate(&list);
    return end == nullptr ? std::nullopt : std::optional(SecondsOf(end));
}

Key ReadKey(std::filesystem::path const& file)
{
    std::string bytes = ReadAll(file, "key", true);
    bool isPasswordAsked = false;
    Key key;
    {
        Bio const bio = BioOf(bytes);
        key.reset(PEM_read_bio_PrivateKey(bio.get(), nullptr, &RefusePassword, &isPasswordAsked));
    }
    OPENSSL_cleanse(bytes.data(), bytes.size());
    ERR_clear_error();
    if (isPasswordAsked)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "the key %s is protected by a password, and nobody is there to type it",
                 file.c_str());
    }
    if (key == nullptr)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "%s: there is no private key in it", file.c_str());
    }
    if (EVP_PKEY_get_security_bits(key.get()) < MIN_KEY_SECURITY_BITS)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT,
                 "the key %s is too short: RSA takes 2048 bits at least, an elliptic curve 256 bits", file.c_str());
    }
    return key;
}

} // namespace ZuTls
