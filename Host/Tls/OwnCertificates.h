#pragma once

#include "Host/Tls/CertificateMaker.h"
#include "ZuTls/Certificate.h"
#include "wApi/wTypes.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace ZuHost
{

/// The authority and the certificate that the host makes for itself, and the folder with their files.
///
/// The folder has `authority.pem`, for people and their browsers, and two files of mode 600 with a certificate and its
/// key: `authority-key.pem` and `host.pem`. Each file is replaced in one step, so that a crash leaves the old or the new
/// one. The authority is made once and never replaced: people have taken it into their browsers. The host's certificate is
/// renewed before it ends, and whenever the clock shows a time in which it is not valid.
/// One thread at a time.
class OwnCertificates final
{
public:
    static constexpr int64 DAY_SECONDS = 86'400;
    static constexpr int64 HOST_SECONDS = 825 * DAY_SECONDS; ///< browsers refuse certificates that are valid for longer
    static constexpr int64 AUTHORITY_SECONDS = 3650 * DAY_SECONDS;
    static constexpr int64 RENEWAL_SECONDS = 90 * DAY_SECONDS; ///< before the end
    static constexpr int64 LEAD_SECONDS = DAY_SECONDS;         ///< the begin, before now: clocks of clients may be slow

    /// Makes the folder and the authority if they are missing, and a certificate for `newNames` if the present one is
    /// missing, damaged, for other names or due. Throws `Zu::Status::BAD_ARGUMENT`, with a sentence that tells what to
    /// do, for an authority that cannot be used, and `Zu::Status::FAILURE` if the files cannot be written.
    OwnCertificates(std::filesystem::path newFolder, std::vector<std::string> newNames,
                    std::function<int64()> newUtcSeconds);
    ~OwnCertificates();

    OwnCertificates(OwnCertificates const&) = delete;
    OwnCertificates& operator=(OwnCertificates const&) = delete;

    /// Makes a new certificate if the present one is due. Returns whether it did. Throws as the constructor does; the
    /// present certificate then stays.
    bool Renew();

    /// The file with the host's certificate and its key.
    std::filesystem::path HostFile() const;

    std::string const& AuthorityPem() const;
    ZuTls::Certificate const& Authority() const;
    std::filesystem::path AuthorityKeyFile() const;

private:
    void ProvideAuthority();
    bool IsUsable() const;
    bool IsDue(ZuTls::Certificate const& certificate) const;
    void MakeHost();
    void Write(std::string const& name, std::string const& text, unsigned mode) const;

    std::filesystem::path const folder;
    std::vector<std::string> const names;
    std::function<int64()> const utcSeconds;
    MadeCertificate authority;
    ZuTls::Certificate authorityFacts;
};

} // namespace ZuHost
