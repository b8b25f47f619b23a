#include "Ctl/CommandLine/Call.h"

#include "Ctl/Outcome/Failure.h"
#include "Ctl/Settings/PrivateFile.h"
#include "Ctl/Settings/SensorsFile.h"
#include "Ctl/Settings/Terminal.h"

#include <charconv>
#include <cstdio>
#include <utility>

namespace ZuCtl
{

namespace
{

constexpr char const* USUAL_ADDRESS = "http://127.0.0.1:8080";

/// A secret goes to this machine, or encrypted, or where the caller insists.
void CheckSecrets(Address const& address, Credentials const& credentials, bool isInsecure)
{
    bool const hasSecret = !credentials.token.empty() || !credentials.user.empty();
    if (hasSecret && !address.isEncrypted && !address.IsThisMachine() && !isInsecure)
    {
        throw Failure(ExitStatus::USAGE, address.Url() + " is another machine, and the secret would travel without "
                                                         "encryption: use https, or --insecure");
    }
}

} // namespace

Call::Call(ParsedWords newParsed, Commands newCommands, Printer& newPrinter)
    : parsed(std::move(newParsed)), commands(newCommands), printer(newPrinter)
{
}

Call::~Call() = default;

bool Call::Has(std::string const& name) const
{
    return parsed.values.contains(name);
}

std::string Call::Text(std::string const& name, std::string const& otherwise) const
{
    auto const found = parsed.values.find(name);
    return found != parsed.values.end() && !found->second.empty() ? found->second.front() : otherwise;
}

std::vector<std::string> Call::Texts(std::string const& name) const
{
    auto const found = parsed.values.find(name);
    return found != parsed.values.end() ? found->second : std::vector<std::string>{};
}

double Call::Number(std::string const& name, double otherwise, double least, double most) const
{
    if (!Has(name))
    {
        return otherwise;
    }
    std::string const text = Text(name);
    double number = 0;
    auto const result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc{} || result.ptr != text.data() + text.size() || !(number >= least && number <= most))
    {
        char limits[64];
        std::snprintf(limits, sizeof limits, "%g to %g", least, most);
        throw Failure(ExitStatus::USAGE, name + ": '" + text + "' is no number from " + limits);
    }
    return number;
}

bool Call::WantsJson() const
{
    return Has("--json");
}

Sensor& Call::Device()
{
    if (sensor == nullptr)
    {
        sensor = MakeSensor();
    }
    return *sensor;
}

std::unique_ptr<Sensor> Call::MakeSensor() const
{
    if (Has("--sensor") && Has("--host"))
    {
        throw Failure(ExitStatus::USAGE, "--sensor and --host exclude each other");
    }
    NamedSensor named;
    if (!Has("--host"))
    {
        SensorsFile const file = Has("--config") ? SensorsFile::Read(Text("--config")) : SensorsFile::ReadUsual();
        std::string const name = Text("--sensor", file.DefaultName());
        named = name.empty() ? NamedSensor{} : file.Find(name);
    }
    std::string const url = Text("--host", named.url.empty() ? USUAL_ADDRESS : named.url);
    std::string const tokenFile = Text("--token-file", named.tokenFile.string());
    std::string const authorityFile = Text("--authority", named.authorityFile.string());

    HttpSettings settings;
    settings.address = Address::Parse(url);
    settings.timeoutSeconds = static_cast<std::uint32_t>(Number("--timeout", settings.timeoutSeconds, 1, 3600));
    settings.authorityPem = authorityFile.empty() ? "" : ReadWholeFile(authorityFile);
    settings.fingerprint = Text("--fingerprint", named.fingerprint);
    Credentials credentials{tokenFile.empty() ? named.token : ReadSecret(tokenFile), Text("--user"), ""};
    if (!credentials.user.empty())
    {
        credentials.token.clear();
    }
    CheckSecrets(settings.address, credentials, Has("--insecure"));
    if (!credentials.user.empty())
    {
        credentials.password = Secret("--password-file", "password of " + credentials.user);
    }
    return std::make_unique<Sensor>(std::move(settings), std::move(credentials));
}

std::string Call::Secret(std::string const& name, std::string const& question, bool isNew) const
{
    if (Has(name))
    {
        return ReadSecret(Text(name));
    }
    return isNew ? AskForNewSecret(question, name) : AskForSecret(question, name);
}

Printer& Call::Out() noexcept
{
    return printer;
}

Commands Call::AllCommands() const noexcept
{
    return commands;
}

bool Call::PrintedJson(nlohmann::json const& document)
{
    if (WantsJson())
    {
        printer.Json(document);
    }
    return WantsJson();
}

void Call::Done(std::string const& text, nlohmann::json document)
{
    document["done"] = text;
    if (!PrintedJson(document))
    {
        printer.Line(text);
    }
}

} // namespace ZuCtl
