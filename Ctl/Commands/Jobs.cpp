#include "Ctl/CommandLine/Call.h"
#include "Ctl/Commands/Commands.h"
#include "Ctl/Commands/Shown.h"
#include "Ctl/Settings/PrivateFile.h"

#include <filesystem>
#include <utility>

namespace ZuCtl
{

namespace
{

using nlohmann::json;

std::string PathOf(std::string const& name, char const* end = "")
{
    return "/jobs/" + Escaped(name) + end;
}

void ListJobs(Call& call)
{
    json const jobs = call.Device().Get("/jobs").at("jobs");
    if (call.PrintedJson(jobs))
    {
        return;
    }
    std::vector<std::vector<Cell>> rows;
    for (json const& job : jobs)
    {
        bool const isLoaded = job.at("loaded");
        std::string const state = !isLoaded ? "" : job.at("modified").get<bool>() ? "loaded, modified" : "loaded";
        rows.push_back(
            {{job.at("name").get<std::string>(), isLoaded ? Colour::BOLD : Colour::PLAIN}, Shown(job, "bytes"), state});
    }
    call.Out().Table({"NAME", "BYTES", "STATE"}, rows);
}

/// A line for each part of a protocol that the job did not bring over.
void ShowLosses(Printer& out, std::string const& protocol, json const& report)
{
    for (char const* const kind : {"reset", "skipped", "lines"})
    {
        for (json const& part : report.at(kind))
        {
            out.Line(protocol + ", " + kind + ": " + part.get<std::string>(), Colour::WARNING);
        }
    }
}

void LoadJob(Call& call)
{
    std::string const name = call.Text("NAME");
    json const report = call.Device().Change("POST", PathOf(name, "/load"), json::object());
    if (call.PrintedJson(report))
    {
        return;
    }
    call.Out().Line(name + " is loaded", Colour::GOOD);
    for (json const& fault : report.at("faults"))
    {
        call.Out().Line(fault.get<std::string>(), Colour::BAD);
    }
    for (auto const& [protocol, part] : report.at("protocols").items())
    {
        ShowLosses(call.Out(), protocol, part);
    }
}

std::string LoadedJob(Call& call)
{
    return call.Device().Get("/sensor").at("job");
}

void SaveJob(Call& call)
{
    std::string const name = call.Text("NAME", call.Has("NAME") ? "" : LoadedJob(call));
    call.Device().Change("POST", PathOf(name, "/save"), json::object());
    call.Done(name + " is saved");
}

void CopyJob(Call& call)
{
    std::string const from = call.Text("FROM");
    std::string const to = call.Text("TO");
    if (from == LoadedJob(call))
    {
        call.Device().Change("POST", PathOf(to, "/save"), json::object()); // with the changes that are not saved yet
    }
    else
    {
        call.Device().Upload(PathOf(to), call.Device().GetText(PathOf(from), true).body, nullptr);
    }
    call.Done(from + " is copied to " + to);
}

void UploadJob(Call& call)
{
    std::filesystem::path const file = call.Text("FILE");
    std::string const name = call.Text("NAME", file.stem().string());
    std::string bytes = ReadWholeFile(file);
    Printer& out = call.Out();
    Sensor::ShowProgress showProgress;
    if (!call.WantsJson())
    {
        showProgress = [&](std::uint64_t sent, std::uint64_t total) { out.Bar(name, sent, total); };
    }
    call.Device().Upload(PathOf(name), std::move(bytes), showProgress);
    out.EndBar();
    call.Done(name + " is uploaded");
}

void DownloadJob(Call& call)
{
    std::string const name = call.Text("NAME");
    std::string const file = call.Text("FILE", name + ".zpjob");
    WritePrivateFile(file, call.Device().GetText(PathOf(name), true).body, call.Has("--force"));
    call.Done(name + " is in " + file);
}

void DeleteJob(Call& call)
{
    std::string const name = call.Text("NAME");
    call.Device().Delete(PathOf(name));
    call.Done(name + " is deleted");
}

Argument NameArgument(Argument::Kind kind, char const* text)
{
    return {kind, "NAME", "", text, Argument::Values::TEXT, {}};
}

} // namespace

std::vector<Command> JobsCommands()
{
    using enum Argument::Kind;
    using enum Argument::Values;
    Argument const name = NameArgument(WORD, "the job");
    Argument const force{FLAG, "--force", "", "replace the file if there is one", TEXT, {}};
    return {
        {"jobs", "list, load, save, copy, move and delete jobs", "", {}, nullptr},
        {"jobs list", "list the jobs", "", {}, &ListJobs},
        {"jobs load", "load a job, and tell what was not taken over", "", {name}, &LoadJob},
        {"jobs save",
         "save the loaded job now",
         "With the name of another job: a copy under that name.",
         {NameArgument(OPTIONAL_WORD, "the job (the loaded one)")},
         &SaveJob},
        {"jobs copy",
         "copy a job on the sensor",
         "",
         {{WORD, "FROM", "", "the job", TEXT, {}}, {WORD, "TO", "", "the name of the copy", TEXT, {}}},
         &CopyJob},
        {"jobs upload",
         "bring a file to the sensor as a job",
         "",
         {{WORD, "FILE", "", "the file", FILES, {}}, NameArgument(OPTIONAL_WORD, "the job (the name of the file)")},
         &UploadJob},
        {"jobs download",
         "fetch a job as a file",
         "",
         {name, {OPTIONAL_WORD, "FILE", "", "the file (NAME.zpjob)", FILES, {}}, force},
         &DownloadJob},
        {"jobs delete", "delete a job", "", {name}, &DeleteJob},
    };
}

} // namespace ZuCtl
