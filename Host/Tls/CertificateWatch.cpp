#include "Host/Tls/CertificateWatch.h"

#include "Host/Audit/ITrail.h"
#include "Host/Tls/HttpsCertificate.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Logging.h"

#include <utility>

namespace ZuHost
{

CertificateWatch::CertificateWatch(HttpsCertificate& watchedCertificate, ZuCommon::ProblemsManager& usedProblems,
                                   ITrail* usedTrail, Use newUse)
    : certificate(watchedCertificate),
      problems(usedProblems),
      trail(usedTrail),
      use(std::move(newUse)),
      timer([this](Zu::AsyncTimer&) { Look(); })
{
}

CertificateWatch::~CertificateWatch()
{
    timer.Stop();
    problems.Remove(problem);
}

void CertificateWatch::Start()
{
    timer.Start(PERIOD_USEC, true);
}

void CertificateWatch::Look()
{
    Zu::MutexLock const held(turn);
    std::string const before = Fingerprint();
    std::string sentence;
    try
    {
        if (certificate.Renew())
        {
            TakeNew(before);
        }
        sentence = certificate.Complaint();
    }
    catch (std::exception const&)
    {
        sentence = "The certificate for HTTPS cannot be renewed: " + Zu::CaughtReason();
    }
    Tell(sentence);
}

void CertificateWatch::ReadAgain()
{
    Zu::MutexLock const held(turn);
    std::string const before = Fingerprint();
    try
    {
        if (certificate.ReadAgain())
        {
            TakeNew(before);
        }
        ZU_LOG_INFO("The certificate for HTTPS has been read again: %1$s", Fingerprint().c_str());
        Tell(certificate.Complaint());
    }
    catch (std::exception const&)
    {
        std::string const reason = Zu::CaughtReason();
        ZU_LOG_ERROR("The certificate for HTTPS stays as it was: %1$s", reason.c_str());
        Note(before, "", "refused: " + reason);
    }
}

void CertificateWatch::TakeNew(std::string const& before)
{
    use(certificate.Current());
    Note(before, Fingerprint(), "done");
}

void CertificateWatch::Note(std::string const& before, std::string const& after, std::string const& result) const
{
    if (trail != nullptr)
    {
        auto const json = [](std::string const& fingerprint) {
            return fingerprint.empty() ? std::string() : R"({"fingerprint":")" + fingerprint + "\"}";
        };
        trail->Note({"host", "", "certificate", json(before), json(after), result});
    }
}

/// Replaces the problem if the sentence is another one.
void CertificateWatch::Tell(std::string const& sentence)
{
    if (sentence == told)
    {
        return;
    }
    problems.Remove(problem);
    problem = {};
    if (!sentence.empty())
    {
        ZU_LOG_WARNING("%1$s", sentence.c_str());
        problem = problems.Add(ZuCommon::ProblemsManager::SEVERITY_WARNING, "HTTPS", "%1$s", sentence.c_str());
    }
    told = sentence;
}

std::string CertificateWatch::Fingerprint() const
{
    return certificate.Current()->Own()->fingerprint;
}

} // namespace ZuHost
