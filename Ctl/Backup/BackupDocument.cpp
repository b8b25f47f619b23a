#include "Ctl/Backup/BackupDocument.h"

#include "Ctl/Outcome/Failure.h"

#include <sodium.h>

#include <ctime>
#include <utility>

namespace ZuCtl
{

using nlohmann::json;

namespace
{

std::string ToBase64(std::string const& bytes)
{
    std::string text(sodium_base64_ENCODED_LEN(bytes.size(), sodium_base64_VARIANT_ORIGINAL), '\0');
    sodium_bin2base64(text.data(), text.size(), reinterpret_cast<unsigned char const*>(bytes.data()), bytes.size(),
                      sodium_base64_VARIANT_ORIGINAL);
    text.pop_back(); // the zero behind the text
    return text;
}

std::string NowInUtc()
{
    std::time_t const now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text;
}

/// The list without members that the replacement makes itself, such as times of use.
json Selected(json const& list, std::initializer_list<char const*> members)
{
    json selected = json::array();
    for (json const& item : list)
    {
        json entry = json::object();
        for (char const* const member : members)
        {
            entry[member] = item.at(member);
        }
        selected.push_back(std::move(entry));
    }
    return selected;
}

/// A part that needs a role, or that not every sensor has. Null if it is refused; `missing` then has the reason.
json Optional(char const* part, json& missing, std::function<json()> const& read)
{
    try
    {
        return read();
    }
    catch (Failure const& failure)
    {
        if (failure.Status() != ExitStatus::NOT_AUTHORISED && failure.Status() != ExitStatus::REFUSED)
        {
            throw;
        }
        missing.push_back(std::string(part) + ": " + failure.what());
        return nullptr;
    }
}

json CollectJobs(Sensor& sensor, std::function<void(std::string const&)> const& showProgress)
{
    json jobs = json::array();
    json const list = sensor.Get("/jobs").at("jobs");
    for (json const& job : list)
    {
        std::string const name = job.at("name");
        if (job.at("loaded").get<bool>() && job.at("modified").get<bool>())
        {
            sensor.Change("POST", "/jobs/" + Escaped(name) + "/save", json::object());
        }
        showProgress("job " + name);
        jobs.push_back({{"name", name}, {"file", ToBase64(sensor.GetText("/jobs/" + Escaped(name), true).body)}});
    }
    return jobs;
}

} // namespace

json CollectBackup(Sensor& sensor, std::function<void(std::string const& part)> const& showProgress)
{
    json missing = json::array();
    json backup{{"format", BACKUP_FORMAT},
                {"made", NowInUtc()},
                {"address", sensor.Client().ServerAddress().Url()},
                {"version", sensor.Get("/").at("version")},
                {"loaded", sensor.Get("/sensor").at("job")},
                {"jobs", CollectJobs(sensor, showProgress)}};
    showProgress("settings, users and tokens");
    backup["authority"] = Selected(json::array({sensor.Get("/sensor/authority")}), {"rest", "idleSeconds"}).at(0);
    backup["users"] = Optional("users", missing, [&] {
        return Selected(sensor.Get("/users").at("users"), {"name", "role", "enabled"});
    });
    backup["tokens"] = Optional("tokens", missing, [&] {
        json const embedded = sensor.Get("/tokens").value("_embedded", json::object());
        return Selected(embedded.value("item", json::array()), {"name", "role", "end", "ended"});
    });
    backup["certificateAuthority"] =
        Optional("certificate of the authority", missing, [&] { return json(sensor.GetText("/authority").body); });
    backup["missing"] = missing;
    return backup;
}

json ParseBackup(std::string const& text)
{
    json backup = json::parse(text, nullptr, false);
    if (!backup.is_object() || !backup.contains("format"))
    {
        throw Failure(ExitStatus::LOCAL_FILE, "The content of the backup is damaged");
    }
    if (backup.at("format") != BACKUP_FORMAT)
    {
        throw Failure(ExitStatus::LOCAL_FILE, "The backup was made by a newer version of this program");
    }
    return backup;
}

std::string FileOf(json const& job)
{
    std::string const text = job.at("file");
    std::string bytes(text.size(), '\0');
    std::size_t size = 0;
    if (sodium_base642bin(reinterpret_cast<unsigned char*>(bytes.data()), bytes.size(), text.data(), text.size(),
                          nullptr, &size, nullptr, sodium_base64_VARIANT_ORIGINAL) != 0)
    {
        throw Failure(ExitStatus::LOCAL_FILE, "The content of the backup is damaged");
    }
    bytes.resize(size);
    return bytes;
}

json NotCarried()
{
    return {
        "passwords: the host keeps hashes alone, and gives them to no caller; restored users get new passwords",
        "texts of tokens: the host keeps hashes alone; restored tokens have new texts",
        "private keys, also that of the host's own authority: they never leave a device; browsers and clients have to "
        "take the authority of the replacement, or the plant's authority signs a certificate for it",
        "files that parameters name (certificates of protocols, lists of revocation), the token file and other options "
        "of "
        "the command line: they belong to the machine",
        "the trail, totals of protocols and the last text: they tell the history of one device"};
}

} // namespace ZuCtl
