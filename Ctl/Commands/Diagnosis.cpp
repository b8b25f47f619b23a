#include "Ctl/Commands/Diagnosis.h"

#include "Ctl/CommandLine/ParsedWords.h"
#include "Ctl/Commands/ServiceStatus.h"
#include "Ctl/Commands/Shown.h"
#include "Ctl/Outcome/Failure.h"

#include <curl/curl.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <iterator>

namespace ZuCtl
{

using nlohmann::json;
using Grade = Finding::Grade;

namespace
{

constexpr std::time_t MAX_CLOCK_DIFFERENCE_SEC = 5;
constexpr std::time_t DAY_SEC = 86400;
constexpr std::time_t MIN_CERTIFICATE_DAYS = 30;
constexpr std::uint64_t MAX_FOLDER_BYTES = 1024u * 1024u * 1024u; // of all files of the data folder
constexpr std::size_t MAX_JOBS = 1000;
constexpr std::size_t SHOWN_LOG_LINES = 3;

/// Does `work`. If the sensor refuses a document, that is a finding, and the other checks go on.
void Examine(std::vector<Finding>& findings, char const* check, std::function<void()> const& work)
{
    try
    {
        work();
    }
    catch (Failure const& failure)
    {
        bool const isBusy = failure.Status() == ExitStatus::BUSY;
        if (!isBusy && failure.Status() != ExitStatus::NOT_AUTHORISED && failure.Status() != ExitStatus::REFUSED)
        {
            throw;
        }
        findings.push_back({check, Grade::WARNING, std::string("not examined: ") + failure.what(),
                            isBusy ? "The sensor is busy: run the doctor again."
                                   : "Run the doctor with a token or a user of a higher role."});
    }
}

Finding JudgeHealth(json const& health)
{
    if (health.at("faults").empty())
    {
        return {"health", Grade::GOOD, "all parts of the host work, up " + Duration(health.at("upTimeSec")), ""};
    }
    return {"health", Grade::FAULT, health.at("faults").at(0).get<std::string>(),
            "Restart the host; if the fault comes back, send a bundle of \"support\" to its maker."};
}

Finding JudgeSensor(json const& sensor)
{
    std::string const state = sensor.at("state");
    if (state == "error")
    {
        return {"sensor", Grade::FAULT, "the sensor is in the state error",
                "Read the problems and the log; restart the host."};
    }
    std::string const missed = Shown(sensor.at("profiles"), "missed");
    if (missed != "0")
    {
        return {"sensor", Grade::WARNING, state + ", " + missed + " profiles missed since the start of the scan",
                "Lower the rate, or relieve the machine of other work."};
    }
    return {"sensor", Grade::GOOD, state + ", job " + Shown(sensor, "job"), ""};
}

/// The host of the sensor, if a connection to this service can tell something.
std::optional<bool> TryPort(Sensor& sensor, json const& service)
{
    json const& parameters = service.at("parameters");
    int const port = parameters.value("port", 0);
    if (!service.at("enabled").get<bool>() || port <= 0 || port > 65535)
    {
        return std::nullopt;
    }
    Address own; // of the service
    own.host = parameters.value("address", "");
    Address const& address = sensor.Client().ServerAddress();
    if (own.IsThisMachine() && !address.IsThisMachine())
    {
        return std::nullopt;
    }
    bool const isAny = own.host == "0.0.0.0" || own.host == "::";
    return AcceptsConnections(isAny ? address.host : own.host, static_cast<std::uint16_t>(port));
}

void ExamineServices(Sensor& sensor, std::vector<Finding>& findings)
{
    json const controls = sensor.Get("/controls");
    for (json const& service : controls.at("_embedded").at("item"))
    {
        findings.push_back(JudgeService(service, TryPort(sensor, service)));
    }
}

void ExamineProblems(json const& problems, std::vector<Finding>& findings)
{
    if (problems.empty())
    {
        findings.push_back({"problems", Grade::GOOD, "none", ""});
    }
    for (json const& problem : problems)
    {
        bool const isError = Shown(problem, "severity") == "error";
        findings.push_back({"problems", isError ? Grade::FAULT : Grade::WARNING,
                            Shown(problem, "source") + ": " + Shown(problem, "text"),
                            "docs/operations.md has the cause and the remedy."});
    }
}

void ExamineLog(Sensor& sensor, std::vector<Finding>& findings)
{
    json const lines = sensor.Get("/log").at("lines");
    std::vector<json> errors;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(errors),
                 [](json const& line) { return Shown(line, "level") == "error"; });
    if (errors.empty())
    {
        findings.push_back({"log", Grade::GOOD, "no errors among the last lines", ""});
    }
    for (std::size_t i = errors.size() - std::min(errors.size(), SHOWN_LOG_LINES); i < errors.size(); ++i)
    {
        findings.push_back({"log", Grade::WARNING, Shown(errors[i], "time") + "  " + Shown(errors[i], "text"), ""});
    }
}

void ExamineCaller(Sensor& sensor, std::vector<Finding>& findings)
{
    json const caller = sensor.Get("/session");
    bool const isOpen = Shown(caller, "caller") == "local";
    findings.push_back(
        {"access", isOpen ? Grade::WARNING : Grade::GOOD, Shown(caller, "caller") + ", " + Shown(caller, "role"),
         isOpen ? "Every program of the sensor's machine is an administrator: make a token or a user." : ""});
}

Finding JudgeConnection(Sensor& sensor)
{
    auto const begin = std::chrono::steady_clock::now();
    sensor.Health();
    auto const took = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin);
    bool const isSlow = took.count() > 1000;
    return {"connection", isSlow ? Grade::WARNING : Grade::GOOD,
            sensor.Client().ServerAddress().Url() + " answers within " + Rounded(took.count()) + " ms",
            isSlow ? "Look at the network and at the load of the sensor's machine." : ""};
}

std::string OwnVersion()
{
    std::string const text = VersionText();
    return text.substr(text.find(' ') + 1, text.find('\n') - text.find(' ') - 1);
}

} // namespace

Finding JudgeClock(std::string const& date, std::time_t now)
{
    std::time_t const theirs = curl_getdate(date.c_str(), nullptr);
    if (theirs == -1)
    {
        return {"clock", Grade::WARNING, "the sensor does not tell its time", ""};
    }
    std::time_t const difference = std::abs(theirs - now);
    if (difference > MAX_CLOCK_DIFFERENCE_SEC)
    {
        return {"clock", Grade::WARNING, "differs by " + Duration(difference) + " from the clock of this machine",
                "Let both machines synchronise their clocks: certificates, tokens and the trail depend on them."};
    }
    return {"clock", Grade::GOOD, "agrees with the clock of this machine", ""};
}

Finding JudgeCertificate(std::string const& end, std::time_t now)
{
    if (end.empty())
    {
        return {"certificate", Grade::GOOD, "none, the connection is not encrypted", ""};
    }
    std::time_t const time = curl_getdate(end.c_str(), nullptr);
    std::time_t const days = (time - now) / DAY_SEC;
    if (time != -1 && days >= MIN_CERTIFICATE_DAYS)
    {
        return {"certificate", Grade::GOOD, "valid until " + end, ""};
    }
    return {"certificate", time <= now ? Grade::FAULT : Grade::WARNING, "ends at " + end,
            "Give the host a new certificate, and send it SIGHUP; the host renews its own by itself."};
}

Finding JudgeVersion(std::string const& hosts, std::string const& own)
{
    std::string const text = "the host has " + hosts + ", this program " + own;
    bool const isOfOneMajor = hosts.substr(0, hosts.find('.')) == own.substr(0, own.find('.'));
    return {"version", isOfOneMajor ? Grade::GOOD : Grade::WARNING, text,
            isOfOneMajor ? "" : "Install the same major version of both."};
}

Finding JudgeDisk(json const& jobs, json const& problems)
{
    bool const cannotSave = std::any_of(problems.begin(), problems.end(), [](json const& problem) {
        std::string const text = Shown(problem, "text");
        return text.find("cannot be saved") != std::string::npos || text.find("cannot be written") != std::string::npos;
    });
    if (cannotSave)
    {
        return {"disk", Grade::FAULT, "the host cannot write its files",
                "Make room on the disk of the sensor, or mend the rights."};
    }
    std::uint64_t bytes = 0;
    for (json const& job : jobs)
    {
        bytes += job.at("bytes").get<std::uint64_t>();
    }
    std::string const text =
        std::to_string(jobs.size()) + " of 1000 jobs with " + std::to_string(bytes / 1024) + " KiB; the host can save";
    bool const isNarrow = jobs.size() > MAX_JOBS * 9 / 10 || bytes > MAX_FOLDER_BYTES / 10 * 9;
    return {"disk", isNarrow ? Grade::WARNING : Grade::GOOD, text, isNarrow ? "Delete jobs that are not needed." : ""};
}

Finding JudgeService(json const& service, std::optional<bool> canConnect)
{
    std::string const id = service.at("id");
    int const status = service.at("status");
    std::string const state = ServiceStateText(status);
    if (IsFailed(status))
    {
        return {"service " + id, Grade::FAULT, state,
                "The problems have the reason: an address or a port that is taken."};
    }
    if (canConnect == false)
    {
        return {"service " + id, Grade::FAULT,
                state + ", and its port " + Shown(service.at("parameters"), "port") + " accepts no connection",
                "Look for a firewall between this machine and the sensor."};
    }
    return {"service " + id, Grade::GOOD, state + (canConnect == true ? ", its port accepts connections" : ""), ""};
}

bool AcceptsConnections(std::string const& host, std::uint16_t port)
{
    constexpr long LIMIT_MSEC = 2000;
    Address address;
    address.host = host;
    address.port = port;
    CURL* const curl = curl_easy_init();
    curl_easy_setopt(curl, CURLOPT_URL, address.Url().c_str());
    curl_easy_setopt(curl, CURLOPT_PROXY, "");
    curl_easy_setopt(curl, CURLOPT_CONNECT_ONLY, 1L);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT_MS, LIMIT_MSEC);
    bool const isOpen = curl_easy_perform(curl) == CURLE_OK;
    curl_easy_cleanup(curl);
    return isOpen;
}

std::vector<Finding> Diagnose(Sensor& sensor)
{
    std::vector<Finding> findings{JudgeConnection(sensor)};
    std::time_t const now = std::time(nullptr);
    findings.push_back(JudgeHealth(sensor.Health()));
    findings.push_back(JudgeCertificate(sensor.Client().ShowCertificate().end, now));
    Examine(findings, "access", [&] { ExamineCaller(sensor, findings); });
    Examine(findings, "version", [&] {
        HttpAnswer const answer = sensor.GetText("/");
        findings.push_back(JudgeVersion(Shown(sensor.Parse(answer.body), "version"), OwnVersion()));
        findings.push_back(JudgeClock(answer.Header("date"), now));
    });
    Examine(findings, "sensor", [&] { findings.push_back(JudgeSensor(sensor.Get("/sensor"))); });
    Examine(findings, "services", [&] { ExamineServices(sensor, findings); });
    Examine(findings, "problems", [&] {
        json const problems = sensor.Get("/problems").at("problems");
        findings.push_back(JudgeDisk(sensor.Get("/jobs").at("jobs"), problems));
        ExamineProblems(problems, findings);
    });
    Examine(findings, "log", [&] { ExamineLog(sensor, findings); });
    return findings;
}

bool HasFault(std::vector<Finding> const& findings)
{
    return std::ranges::any_of(findings, [](Finding const& finding) { return finding.grade == Grade::FAULT; });
}

} // namespace ZuCtl
