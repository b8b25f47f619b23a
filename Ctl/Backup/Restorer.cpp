#include "Ctl/Backup/Restorer.h"

#include "Ctl/Backup/BackupDocument.h"
#include "Ctl/Outcome/Failure.h"

#include <sodium.h>

#include <algorithm>
#include <utility>

namespace ZuCtl
{

using nlohmann::json;

namespace
{

// Names that no person gives a job or a token, so that those of the sensor stay.
constexpr char const* INTERIM_JOB = "zucontrolctl-restore";
constexpr char const* INTERIM_TOKEN = "zucontrolctl restore";
constexpr char const* ADMINISTRATOR = "administrator";

std::string PathOfJob(std::string const& name, char const* end = "")
{
    return "/jobs/" + Escaped(name) + end;
}

/// A password with 120 random bits, in groups that a person can type.
std::string NewPassword()
{
    constexpr char LETTERS[] = "abcdefghjkmnpqrstuvwxyz23456789"; // without letters that look alike
    std::string password;
    for (int i = 0; i < 25; ++i)
    {
        password += i > 0 && i % 5 == 0 ? "-" : "";
        password += LETTERS[randombytes_uniform(sizeof LETTERS - 1)];
    }
    return password;
}

/// A list of the backup; empty if the maker of the backup could not read it.
json PartOf(json const& backup, char const* member)
{
    json list = backup.value(member, json());
    return list.is_array() ? list : json::array();
}

} // namespace

Restorer::Restorer(Sensor& newSensor, json const& newBackup, ShowStep newShowStep)
    : sensor(newSensor), backup(newBackup), showStep(std::move(newShowStep))
{
}

json const& Restorer::Steps() const noexcept
{
    return steps;
}

bool Restorer::HasFailed() const noexcept
{
    return hasFailed;
}

bool Restorer::Try(std::string const& step, std::function<void()> const& work)
{
    json entry{{"step", step}, {"result", "done"}};
    try
    {
        work();
    }
    catch (Failure const& failure)
    {
        if (failure.Status() != ExitStatus::REFUSED && failure.Status() != ExitStatus::BUSY)
        {
            throw; // the next step would fail in the same way
        }
        entry["result"] = "failed";
        entry["text"] = failure.what();
        hasFailed = true;
    }
    showStep(entry);
    steps.push_back(entry);
    return entry["result"] == "done";
}

void Restorer::RestoreJobs()
{
    // The loaded job cannot be replaced, so a job under another name is loaded meanwhile.
    std::string const loaded = backup.at("loaded");
    json const& jobs = backup.at("jobs");
    auto const found =
        std::find_if(jobs.begin(), jobs.end(), [&](json const& job) { return job.at("name") == loaded; });
    if (found == jobs.end())
    {
        throw Failure(ExitStatus::LOCAL_FILE, "The content of the backup is damaged");
    }
    bool const isReady = Try("make room for the jobs", [&] {
        sensor.Upload(PathOfJob(INTERIM_JOB), FileOf(*found), nullptr);
        sensor.Change("POST", PathOfJob(INTERIM_JOB, "/load"), json::object());
    });
    for (json const& job : jobs)
    {
        std::string const name = job.at("name");
        Try("job " + name, [&] { sensor.Upload(PathOfJob(name), FileOf(job), nullptr); });
    }
    Try("load job " + loaded, [&] { sensor.Change("POST", PathOfJob(loaded, "/load"), json::object()); });
    if (isReady)
    {
        Try("clean up", [&] { sensor.Delete(PathOfJob(INTERIM_JOB)); });
    }
}

void Restorer::RestoreSettings()
{
    Try("control authority", [&] { sensor.Change("PUT", "/sensor/authority", backup.at("authority")); });
}

json const& Restorer::Secrets() const noexcept
{
    return secrets;
}

void Restorer::RestoreCallers()
{
    if (PartOf(backup, "users").empty() && PartOf(backup, "tokens").empty())
    {
        return;
    }
    bool const hasInterim = Try("log the program in", [&] {
        json const answer = sensor.Change("POST", "/tokens", {{"name", INTERIM_TOKEN}, {"role", ADMINISTRATOR}});
        sensor.UseToken(answer.at("token"));
    });
    if (!hasInterim)
    {
        return;
    }
    try
    {
        RestoreTokens();
        RestoreUsers();
    }
    catch (...)
    {
        EndInterimToken();
        throw;
    }
    Try("log the program out", [&] { sensor.Delete("/tokens/" + Escaped(INTERIM_TOKEN)); });
}

/// As far as the sensor can be reached.
void Restorer::EndInterimToken() noexcept
{
    try
    {
        sensor.Delete("/tokens/" + Escaped(INTERIM_TOKEN));
    }
    catch (std::exception const&)
    {
        return; // the list of tokens shows it
    }
}

void Restorer::RestoreTokens()
{
    for (json const& token : PartOf(backup, "tokens"))
    {
        std::string const name = token.at("name");
        if (token.at("ended").get<bool>() || name == INTERIM_TOKEN)
        {
            continue;
        }
        json request{{"name", name}, {"role", token.at("role")}};
        if (!token.at("end").is_null())
        {
            request["end"] = token.at("end");
        }
        Try("token " + name, [&] { secrets["tokens"][name] = sensor.Change("POST", "/tokens", request).at("token"); });
    }
}

void Restorer::RestoreUsers()
{
    json users = PartOf(backup, "users");
    // The first user of a sensor has to be an administrator who can log in.
    std::stable_partition(users.begin(), users.end(), [](json const& user) {
        return user.at("role") == ADMINISTRATOR && user.at("enabled").get<bool>();
    });
    for (json const& user : users)
    {
        Try("user " + user.at("name").get<std::string>(), [&] { AddUser(user); });
    }
}

void Restorer::AddUser(json const& user)
{
    std::string const name = user.at("name");
    std::string const password = NewPassword();
    sensor.Change("POST", "/users", {{"name", name}, {"role", user.at("role")}, {"password", password}});
    secrets["users"][name] = password;
    if (!user.at("enabled").get<bool>())
    {
        sensor.Change("PATCH", "/users/" + Escaped(name), {{"enabled", false}});
    }
}

} // namespace ZuCtl
