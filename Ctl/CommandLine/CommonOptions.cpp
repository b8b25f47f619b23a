#include "Ctl/CommandLine/Command.h"

namespace ZuCtl
{

std::span<Argument const> CommonOptions()
{
    using enum Argument::Kind;
    using enum Argument::Values;
    static std::vector<Argument> const OPTIONS{
        {OPTION, "--sensor", "NAME", "the sensor of this name in the file of sensors", TEXT, {}},
        {OPTION, "--host", "URL", "the sensor at this address, such as https://10.0.0.7:8443", TEXT, {}},
        {OPTION, "--config", "FILE", "another file of sensors than ~/.config/zucontrol/sensors.toml", FILES, {}},
        {OPTION, "--token-file", "FILE", "send the token in the first line of this file", FILES, {}},
        {OPTION, "--user", "NAME", "log in as this user; the program asks for the password", TEXT, {}},
        {OPTION, "--password-file", "FILE", "the password of --user, in the first line of this file", FILES, {}},
        {OPTION, "--authority", "FILE", "trust certificates of this authority alone, a PEM file", FILES, {}},
        {OPTION,
         "--fingerprint",
         "SHA256",
         "trust the certificate, or the authority, with this fingerprint alone",
         TEXT,
         {}},
        {OPTION, "--timeout", "SECONDS", "how long to wait for an answer, from 1 to 3600 (15)", TEXT, {}},
        {FLAG, "--insecure", "", "send a token or a password to another machine without encryption", TEXT, {}},
        {FLAG, "--json", "", "print documents for programs", TEXT, {}},
        {FLAG, "--no-color", "", "print no colours; without it colours go to a terminal alone", TEXT, {}},
    };
    return OPTIONS;
}

} // namespace ZuCtl
