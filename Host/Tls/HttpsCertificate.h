#pragma once

#include "Host/Tls/OwnCertificates.h"
#include "ZuTls/Context.h"
#include "wApi/wMutex.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace ZuHost
{

/// The certificate with which the host serves HTTPS: that of the user's files, or one that the host makes for itself.
///
/// A certificate that ends while the host runs stays in use, since the clock may be wrong: clients judge it by their own
/// clocks. The user's certificate becomes a complaint then, and one of the host is renewed.
/// Threads: all operations are thread-safe. Only one that reads files may wait for the disk.
class HttpsCertificate final
{
public:
    static constexpr int64 WARNING_SECONDS = 30 * OwnCertificates::DAY_SECONDS; ///< before the end of the user's one
    static constexpr int64 AUTHORITY_WARNING_SECONDS = 365 * OwnCertificates::DAY_SECONDS;

    struct UsersFiles
    {
        std::filesystem::path certificate;
        std::filesystem::path key;
    };

    struct OwnFiles
    {
        std::filesystem::path folder;
        std::string listenerAddress; ///< is among the names in the certificate
    };

    /// Takes the user's files. Throws as `ZuTls::Context` does.
    explicit HttpsCertificate(UsersFiles const& files, ZuTls::Clock newClock = {});

    /// Takes a certificate of the host's own. Throws as `OwnCertificates` does.
    explicit HttpsCertificate(OwnFiles const& files, ZuTls::Clock newClock = {});
    ~HttpsCertificate();

    HttpsCertificate(HttpsCertificate const&) = delete;
    HttpsCertificate& operator=(HttpsCertificate const&) = delete;

    /// For new connections.
    std::shared_ptr<ZuTls::Context const> Current() const;

    /// Reads the user's files again, or renews the host's own certificate if it is due. Returns whether `Current` has
    /// changed. Throws as the constructor does; the present certificate then stays.
    bool ReadAgain();

    /// As `ReadAgain`, for the host's own certificate only: the user's files wait for the user.
    bool Renew();

    bool IsOwn() const noexcept;

    /// The host's own authority as a PEM text and its fingerprint; empty with the user's files.
    std::string AuthorityPem() const;
    std::string AuthorityFingerprint() const;

    /// A sentence about a certificate or authority that has ended or ends soon; empty if there is nothing to say.
    std::string Complaint() const;

private:
    std::shared_ptr<ZuTls::Context const> Read() const ZU_REQUIRES(reading);
    std::string ComplaintOfUsersFile(ZuTls::Certificate const& certificate) const;

    ZuTls::Clock const clock;
    ZuTls::Settings settings;
    mutable Zu::Mutex reading; // one operation on the files at a time; `lock` is taken under it
    std::optional<OwnCertificates> own ZU_GUARDED_BY(reading);
    bool isOwn = false;
    std::string authorityPem;
    ZuTls::Certificate authority;

    mutable Zu::Mutex lock; // a leaf
    std::shared_ptr<ZuTls::Context const> current ZU_GUARDED_BY(lock);
};

} // namespace ZuHost
