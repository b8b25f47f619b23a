#include "Ctl/Settings/SensorsFile.h"

#include "Ctl/Outcome/Failure.h"
#include "Ctl/Settings/PrivateFile.h"

#include <cstdlib>
#include <string_view>
#include <toml++/toml.h>

namespace ZuCtl
{

namespace
{

/// Reads the nodes of one file, and says where a fault is.
class Reader final
{
public:
    explicit Reader(std::filesystem::path const& newFile) : file(newFile)
    {
    }

    std::string Text(toml::key const& key, toml::node const& node) const
    {
        auto const text = node.value_exact<std::string>();
        if (!text)
        {
            Refuse(node.source(), "'" + std::string(key.str()) + "' is no text");
        }
        return *text;
    }

    std::filesystem::path File(toml::key const& key, toml::node const& node) const
    {
        return file.parent_path() / Text(key, node);
    }

    toml::table const& Table(toml::key const& key, toml::node const& node) const
    {
        if (!node.is_table())
        {
            Refuse(node.source(), "'" + std::string(key.str()) + "' is no table");
        }
        return *node.as_table();
    }

    [[noreturn]] void RefuseKey(toml::key const& key, std::string const& known) const
    {
        Refuse(key.source(), "'" + std::string(key.str()) + "' is not known; known are " + known);
    }

    [[noreturn]] void Refuse(toml::source_region const& place, std::string const& reason) const
    {
        throw Failure(ExitStatus::LOCAL_FILE,
                      file.string() + ", line " + std::to_string(place.begin.line) + ": " + reason);
    }

private:
    std::filesystem::path const& file;
};

NamedSensor ReadSensor(Reader const& reader, toml::key const& name, toml::table const& table)
{
    NamedSensor sensor;
    for (auto const& [key, node] : table)
    {
        if (key == "url")
        {
            sensor.url = reader.Text(key, node);
        }
        else if (key == "token")
        {
            sensor.token = reader.Text(key, node);
        }
        else if (key == "tokenFile")
        {
            sensor.tokenFile = reader.File(key, node);
        }
        else if (key == "authority")
        {
            sensor.authorityFile = reader.File(key, node);
        }
        else if (key == "fingerprint")
        {
            sensor.fingerprint = reader.Text(key, node);
        }
        else
        {
            reader.RefuseKey(key, "url, token, tokenFile, authority and fingerprint");
        }
    }
    if (sensor.url.empty())
    {
        reader.Refuse(table.source(), "the sensor '" + std::string(name.str()) + "' has no url");
    }
    return sensor;
}

toml::table Parse(std::filesystem::path const& file, Reader const& reader)
{
    try
    {
        return toml::parse(ReadPrivateFile(file));
    }
    catch (toml::parse_error const& error)
    {
        reader.Refuse(error.source(), std::string(error.description()));
    }
}

} // namespace

SensorsFile SensorsFile::Read(std::filesystem::path const& file)
{
    SensorsFile result;
    result.file = file;
    Reader const reader(file);
    for (toml::table const root = Parse(file, reader); auto const& [key, node] : root)
    {
        if (key == "default")
        {
            result.defaultName = reader.Text(key, node);
        }
        else if (key == "sensors")
        {
            for (auto const& [name, sensor] : reader.Table(key, node))
            {
                result.sensors[std::string(name.str())] = ReadSensor(reader, name, reader.Table(name, sensor));
            }
        }
        else
        {
            reader.RefuseKey(key, "default and sensors");
        }
    }
    return result;
}

SensorsFile SensorsFile::ReadUsual()
{
    std::filesystem::path const file = UsualPlace();
    std::error_code error;
    if (!std::filesystem::exists(file, error) && !error)
    {
        SensorsFile none;
        none.file = file;
        return none;
    }
    return Read(file);
}

std::filesystem::path SensorsFile::UsualPlace()
{
    char const* const configuration = std::getenv("XDG_CONFIG_HOME");
    char const* const home = std::getenv("HOME");
    std::filesystem::path const folder = configuration != nullptr && *configuration == '/'
                                             ? std::filesystem::path(configuration)
                                             : std::filesystem::path(home != nullptr ? home : "/") / ".config";
    return folder / "zucontrol" / "sensors.toml";
}

std::string const& SensorsFile::DefaultName() const noexcept
{
    return defaultName;
}

NamedSensor const& SensorsFile::Find(std::string const& name) const
{
    auto const found = sensors.find(name);
    if (found != sensors.end())
    {
        return found->second;
    }
    std::string known;
    for (auto const& [other, sensor] : sensors)
    {
        known += (known.empty() ? "" : ", ") + other;
    }
    throw Failure(ExitStatus::USAGE, "There is no sensor '" + name + "' in " + file.string() + "; it has " +
                                         (known.empty() ? "none" : known));
}

} // namespace ZuCtl
