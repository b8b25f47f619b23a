#pragma once

#include "Ctl/Connection/Sensor.h"

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace ZuCtl
{

/// What the doctor says about one thing.
struct Finding
{
    enum class Grade
    {
        GOOD,
        WARNING,
        FAULT
    };

    std::string check;
    Grade grade = Grade::GOOD;
    std::string text;
    std::string advice; ///< what to do; empty if nothing
};

/// Examines a sensor. Throws `Failure` if it cannot be reached or is not trusted; all else is a finding.
std::vector<Finding> Diagnose(Sensor& sensor);

bool HasFault(std::vector<Finding> const& findings);

// The judgements, without a sensor.

/// `date` is the header Date of an answer, `now` the time of this machine.
Finding JudgeClock(std::string const& date, std::time_t now);
/// `end` as OpenSSL writes it, such as "Mar  1 12:00:00 2029 GMT"; empty: no encryption.
Finding JudgeCertificate(std::string const& end, std::time_t now);
Finding JudgeVersion(std::string const& hosts, std::string const& own);
/// `jobs` is the list of /jobs.
Finding JudgeDisk(nlohmann::json const& jobs, nlohmann::json const& problems);
/// `canConnect` tells whether a connection to the port of the service was accepted; empty if it was not tried.
Finding JudgeService(nlohmann::json const& service, std::optional<bool> canConnect);

/// Whether a TCP port accepts a connection within two seconds.
bool AcceptsConnections(std::string const& host, std::uint16_t port);

} // namespace ZuCtl
