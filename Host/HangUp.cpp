#include "Host/HangUp.h"

#include "Host/Application.h"
#include "Host/Http/BearerToken.h"
#include "Host/Log/LogSink.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Logging.h"

#include <algorithm>
#include <iterator>

namespace ZuHost
{

namespace
{

bool HasChanged(OptionForm const& form, Options const& before, Options const& after)
{
    auto const given = [&form](Options const& options) {
        std::vector<GivenOption> values;
        std::copy_if(options.given.begin(), options.given.end(), std::back_inserter(values),
                     [&form](GivenOption const& value) { return value.form == &form; });
        return values;
    };
    return given(before) != given(after);
}

} // namespace

HangUp::HangUp(Options const& startOptions, Application& usedApplication, LogScope& usedLog)
    : options(startOptions), application(usedApplication), log(usedLog), problems(&usedApplication.Problems())
{
}

void HangUp::Answer()
{
    problems.Begin();
    if (!options.configurationFile.empty())
    {
        ReadConfigurationAgain();
    }
    if (!options.tokenFile.empty())
    {
        ReadTokenAgain();
    }
    problems.End();
    if (options.configurationFile.empty() && options.tokenFile.empty() && options.httpsAddress.empty())
    {
        ZU_LOG_INFO("The hang-up signal concerns the services for PLCs alone: there is no configuration file, no token "
                    "file and no HTTPS");
    }
    application.ReadCertificatesAgain();
}

void HangUp::ReadConfigurationAgain()
{
    try
    {
        Options const present = ParseOptions(options.words);
        log.SetLowestLevel(present.logLevel);
        ZU_LOG_INFO("The configuration has been read again");
        for (OptionForm const& form : OptionForms())
        {
            if (form.scope == OptionForm::Scope::START && HasChanged(form, options, present))
            {
                ZU_LOG_WARNING("The new value of '%s' in %s takes effect at the next start", form.name,
                               options.configurationFile.c_str());
            }
        }
    }
    catch (std::exception const&)
    {
        Complain("The configuration stays as it was: " + Zu::CaughtReason());
    }
}

void HangUp::ReadTokenAgain()
{
    try
    {
        application.SetToken(BearerToken::ReadFile(options.tokenFile));
        ZU_LOG_INFO("The token file has been read again");
    }
    catch (std::exception const&)
    {
        Complain("The token stays as it was: " + Zu::CaughtReason());
    }
}

void HangUp::Complain(std::string const& sentence)
{
    ZU_LOG_ERROR("%s", sentence.c_str());
    problems.Register(
        application.Problems().Add(ZuCommon::ProblemsManager::SEVERITY_ERROR, "Host", "%1$s", sentence.c_str()));
}

} // namespace ZuHost
