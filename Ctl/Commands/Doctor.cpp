#include "Ctl/CommandLine/Call.h"
#include "Ctl/Commands/Commands.h"
#include "Ctl/Commands/Diagnosis.h"
#include "Ctl/Outcome/Failure.h"

namespace ZuCtl
{

namespace
{

using nlohmann::json;

Colour ColourOf(Finding::Grade grade)
{
    return grade == Finding::Grade::GOOD      ? Colour::GOOD
           : grade == Finding::Grade::WARNING ? Colour::WARNING
                                              : Colour::BAD;
}

char const* TextOf(Finding::Grade grade)
{
    return grade == Finding::Grade::GOOD ? "ok" : grade == Finding::Grade::WARNING ? "warning" : "fault";
}

void ShowFindings(Call& call, std::vector<Finding> const& findings)
{
    json document = json::array();
    for (Finding const& finding : findings)
    {
        document.push_back({{"check", finding.check},
                            {"grade", TextOf(finding.grade)},
                            {"text", finding.text},
                            {"advice", finding.advice}});
    }
    if (call.PrintedJson(document))
    {
        return;
    }
    for (Finding const& finding : findings)
    {
        call.Out().Line(std::string(TextOf(finding.grade)) + "  " + finding.check + ": " + finding.text,
                        ColourOf(finding.grade));
        if (!finding.advice.empty())
        {
            call.Out().Line("    " + finding.advice);
        }
    }
}

void Examine(Call& call)
{
    std::vector<Finding> const findings = Diagnose(call.Device());
    ShowFindings(call, findings);
    if (HasFault(findings))
    {
        throw Failure(ExitStatus::UNWELL, "The doctor has found a fault");
    }
}

} // namespace

Command DoctorCommand()
{
    return {"doctor",
            "examine the sensor, and tell what to do about each fault",
            "Looks at the connection, the version, the role of the caller, clock, certificate, health, sensor, "
            "services and their ports, jobs, disk, problems and the last errors of the log.",
            {},
            &Examine};
}

} // namespace ZuCtl
