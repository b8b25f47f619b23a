#pragma once

#include "ZuApi/AsyncTimer.h"
#include "ZuCommon/Problems.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <functional>
#include <memory>
#include <string>

namespace ZuTls
{
class Context;
}

namespace ZuHost
{

class HttpsCertificate;
class ITrail;

/// Renews the host's own certificate in time, reads the user's one again when asked to, and keeps a problem while the
/// certificate needs the user's attention.
///
/// It looks once a minute on its own thread, "AsyncTimer". `ReadAgain` and `Look` exclude each other.
class CertificateWatch final
{
public:
    static constexpr uint64 PERIOD_USEC = 60'000'000;

    /// Gives the certificate to new connections.
    using Use = std::function<void(std::shared_ptr<ZuTls::Context const> const&)>;

    /// All arguments, and what `newUse` uses, outlive this. The trail may be null. It does nothing until `Start`.
    CertificateWatch(HttpsCertificate& watchedCertificate, ZuCommon::ProblemsManager& usedProblems, ITrail* usedTrail,
                     Use newUse);
    ~CertificateWatch(); ///< stops, and removes its problem

    CertificateWatch(CertificateWatch const&) = delete;
    CertificateWatch& operator=(CertificateWatch const&) = delete;

    void Start(); ///< looks at once, too

    /// Takes the certificate that is on the disk now. If it cannot be used, the present one stays and an error line tells
    /// why. Any thread may call.
    void ReadAgain();

    /// Looks once. The timer calls it.
    void Look();

private:
    void TakeNew(std::string const& before) ZU_REQUIRES(turn);
    void Note(std::string const& before, std::string const& after, std::string const& result) const;
    void Tell(std::string const& sentence) ZU_REQUIRES(turn);
    std::string Fingerprint() const;

    HttpsCertificate& certificate;
    ZuCommon::ProblemsManager& problems;
    ITrail* const trail;
    Use const use;
    Zu::Mutex turn; // one look or one reading at a time; locks of the certificate and the server are taken under it
    std::string told ZU_GUARDED_BY(turn); // the sentence of the problem; empty: there is none
    ZuCommon::ProblemsManager::Iterator problem ZU_GUARDED_BY(turn);
    Zu::AsyncTimer timer; // last: it uses all members above
};

} // namespace ZuHost
