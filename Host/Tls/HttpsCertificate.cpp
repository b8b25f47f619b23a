#include "Host/Tls/HttpsCertificate.h"

#include "Host/Tls/MachineNames.h"

#include <chrono>
#include <utility>

namespace ZuHost
{

namespace
{

ZuTls::Clock Complete(ZuTls::Clock clock)
{
    if (!clock.utcSeconds)
    {
        clock.utcSeconds = [] {
            return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch())
                .count();
        };
    }
    return clock;
}

} // namespace

HttpsCertificate::HttpsCertificate(UsersFiles const& files, ZuTls::Clock newClock)
    : clock(Complete(std::move(newClock)))
{
    settings.certificateFile = files.certificate;
    settings.keyFile = files.key;
    Zu::MutexLock const held(reading);
    std::shared_ptr<ZuTls::Context const> first = Read();
    Zu::MutexLock const guard(lock);
    current = std::move(first);
}

HttpsCertificate::HttpsCertificate(OwnFiles const& files, ZuTls::Clock newClock)
    : clock(Complete(std::move(newClock))), isOwn(true)
{
    Zu::MutexLock const held(reading);
    own.emplace(files.folder, MachineNames(files.listenerAddress), clock.utcSeconds);
    authorityPem = own->AuthorityPem();
    authority = own->Authority();
    settings.certificateFile = own->HostFile();
    settings.keyFile = own->HostFile();
    std::shared_ptr<ZuTls::Context const> first = Read();
    Zu::MutexLock const guard(lock);
    current = std::move(first);
}

HttpsCertificate::~HttpsCertificate() = default;

std::shared_ptr<ZuTls::Context const> HttpsCertificate::Read() const
{
    return std::make_shared<ZuTls::Context>(ZuTls::Side::SERVER, settings, clock);
}

std::shared_ptr<ZuTls::Context const> HttpsCertificate::Current() const
{
    Zu::MutexLock const guard(lock);
    return current;
}

bool HttpsCertificate::ReadAgain()
{
    if (isOwn)
    {
        return Renew();
    }
    Zu::MutexLock const held(reading);
    std::shared_ptr<ZuTls::Context const> read = Read();
    Zu::MutexLock const guard(lock);
    current = std::move(read);
    return true;
}

bool HttpsCertificate::Renew()
{
    Zu::MutexLock const held(reading);
    if (!own.has_value() || !own->Renew())
    {
        return false;
    }
    std::shared_ptr<ZuTls::Context const> read = Read();
    Zu::MutexLock const guard(lock);
    current = std::move(read);
    return true;
}

bool HttpsCertificate::IsOwn() const noexcept
{
    return isOwn;
}

std::string HttpsCertificate::AuthorityPem() const
{
    return authorityPem;
}

std::string HttpsCertificate::AuthorityFingerprint() const
{
    return authority.fingerprint;
}

std::string HttpsCertificate::Complaint() const
{
    std::shared_ptr<ZuTls::Context const> const present = Current();
    if (!isOwn)
    {
        return ComplaintOfUsersFile(*present->Own());
    }
    if (clock.utcSeconds() < authority.untilUtcSeconds - AUTHORITY_WARNING_SECONDS)
    {
        return {};
    }
    bool const hasEnded = clock.utcSeconds() >= authority.untilUtcSeconds;
    return std::string("The authority of the certificate for HTTPS ") + (hasEnded ? "ended on " : "ends on ") +
           ZuTls::DayText(authority.untilUtcSeconds) + ": to get a new one, remove authority-key.pem from the folder " +
           settings.certificateFile.parent_path().string() + " and start the host again";
}

std::string HttpsCertificate::ComplaintOfUsersFile(ZuTls::Certificate const& certificate) const
{
    int64 const now = clock.utcSeconds();
    std::string const what = "The certificate " + settings.certificateFile.string();
    if (now >= certificate.untilUtcSeconds)
    {
        return what + " ended on " + ZuTls::DayText(certificate.untilUtcSeconds) + ": clients refuse it";
    }
    if (now < certificate.fromUtcSeconds)
    {
        return what + " is valid only from " + ZuTls::DayText(certificate.fromUtcSeconds) + ": the clock may be wrong";
    }
    return now >= certificate.untilUtcSeconds - WARNING_SECONDS
               ? what + " ends on " + ZuTls::DayText(certificate.untilUtcSeconds)
               : "";
}

} // namespace ZuHost
