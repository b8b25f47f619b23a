#include "Ctl/Backup/BackupDocument.h"
#include "Ctl/Backup/Restorer.h"
#include "Ctl/Backup/SealedFile.h"
#include "Ctl/CommandLine/Call.h"
#include "Ctl/Commands/Commands.h"
#include "Ctl/Commands/Shown.h"
#include "Ctl/Outcome/Failure.h"
#include "Ctl/Settings/PrivateFile.h"

namespace ZuCtl
{

namespace
{

using nlohmann::json;

constexpr char const* PASSPHRASE_FILE = "--passphrase-file";

void ShowNotCarried(Printer& out)
{
    out.Line("Not carried:", Colour::BOLD);
    for (json const& sentence : NotCarried())
    {
        out.Line("  " + sentence.get<std::string>());
    }
}

void MakeBackup(Call& call)
{
    std::string const file = call.Text("FILE");
    CheckFileToWrite(file, call.Has("--force")); // before the questions
    std::string const passphrase = call.Secret(PASSPHRASE_FILE, "passphrase of the backup", true);
    Printer& out = call.Out();
    json const backup = CollectBackup(call.Device(), [&](std::string const& part) {
        if (!call.WantsJson())
        {
            out.Line(part);
        }
    });
    WritePrivateFile(file, Seal(backup.dump(), passphrase), call.Has("--force"));
    if (!call.WantsJson())
    {
        for (json const& sentence : backup.at("missing"))
        {
            out.Line("missing, " + sentence.get<std::string>(), Colour::WARNING);
        }
        ShowNotCarried(out);
    }
    call.Done("The backup is in " + file, {{"file", file},
                                           {"jobs", backup.at("jobs").size()},
                                           {"missing", backup.at("missing")},
                                           {"notCarried", NotCarried()}});
}

/// What a backup has, without the files of the jobs.
json ContentOf(json const& backup)
{
    json content = backup;
    content["jobs"] = json::array();
    for (json const& job : backup.at("jobs"))
    {
        content["jobs"].push_back(job.at("name"));
    }
    return content;
}

void ShowContent(Call& call, json const& backup)
{
    json const content = ContentOf(backup);
    if (call.PrintedJson(content))
    {
        return;
    }
    for (char const* const member :
         {"made", "address", "version", "loaded", "jobs", "authority", "users", "tokens", "missing"})
    {
        call.Out().Line(std::string(member) + ": " + Shown(content, member));
    }
    ShowNotCarried(call.Out());
}

/// The sensor does not tell the secrets again, so they are printed if the file cannot be written.
void WriteSecrets(Call& call, std::string const& file, json const& secrets)
{
    try
    {
        WritePrivateFile(file, secrets.dump(2) + '\n', true);
    }
    catch (Failure const&)
    {
        call.Out().Json(secrets);
        throw;
    }
}

/// Makes users and tokens, and writes their new secrets into a file.
void RestoreCallers(Call& call, Restorer& restorer)
{
    std::string const file = call.Text("--secrets");
    WritePrivateFile(file, "", false); // before any secret is made: the file can be written
    auto const write = [&] { WriteSecrets(call, file, restorer.Secrets()); };
    try
    {
        restorer.RestoreCallers();
    }
    catch (...)
    {
        write(); // the sensor does not tell them again
        throw;
    }
    write();
}

void RestoreBackup(Call& call)
{
    if (call.Has("--secrets"))
    {
        CheckFileToWrite(call.Text("--secrets"), false); // before the question, and before any change
    }
    std::string const sealed = ReadWholeFile(call.Text("FILE"));
    json const backup = ParseBackup(Unseal(sealed, call.Secret(PASSPHRASE_FILE, "passphrase of the backup")));
    if (call.Has("--check"))
    {
        ShowContent(call, backup);
        return;
    }
    Printer& out = call.Out();
    Restorer restorer(call.Device(), backup, [&](json const& step) {
        if (!call.WantsJson())
        {
            bool const isDone = step.at("result") == "done";
            out.Line(Shown(step, "step") + ": " + Shown(step, isDone ? "result" : "text"),
                     isDone ? Colour::PLAIN : Colour::BAD);
        }
    });
    restorer.RestoreJobs();
    restorer.RestoreSettings();
    if (call.Has("--secrets"))
    {
        RestoreCallers(call, restorer);
    }
    if (!call.PrintedJson({{"steps", restorer.Steps()}, {"notCarried", NotCarried()}}))
    {
        out.Line(call.Has("--secrets") ? "The new passwords and tokens are in " + call.Text("--secrets")
                                       : "Users and tokens are left out: --secrets FILE makes them, with new secrets");
        ShowNotCarried(out);
    }
    if (restorer.HasFailed())
    {
        throw Failure(ExitStatus::REFUSED, "The sensor has refused a part of the backup");
    }
}

} // namespace

Command BackupCommand()
{
    using enum Argument::Kind;
    using enum Argument::Values;
    return {
        "backup",
        "write jobs, settings, users and tokens into an encrypted file",
        "The file is encrypted with a passphrase. Passwords, texts of tokens and private keys are not in it: the host "
        "gives them to no caller. Without the role administrator users and tokens are missing.",
        {{WORD, "FILE", "", "the file", FILES, {}},
         {OPTION, PASSPHRASE_FILE, "FILE", "the passphrase, in the first line of this file", FILES, {}},
         {FLAG, "--force", "", "replace the file if there is one", TEXT, {}}},
        &MakeBackup};
}

Command RestoreCommand()
{
    using enum Argument::Kind;
    using enum Argument::Values;
    return {
        "restore",
        "bring a backup onto a sensor, such as a replacement",
        "Jobs of the same names are replaced, others stay. Users and tokens are made with new secrets, which the file "
        "of --secrets then has.",
        {{WORD, "FILE", "", "the file", FILES, {}},
         {OPTION, PASSPHRASE_FILE, "FILE", "the passphrase, in the first line of this file", FILES, {}},
         {OPTION,
          "--secrets",
          "FILE",
          "make users and tokens too, and write their new secrets into this new file",
          FILES,
          {}},
         {FLAG, "--check", "", "show what the backup has, and change nothing", TEXT, {}}},
        &RestoreBackup};
}

} // namespace ZuCtl
