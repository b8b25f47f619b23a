#include "Host/Jobs/JobDocument.h"

#include <nlohmann/json.hpp>

#include <string_view>

namespace ZuHost::JobDocument
{

namespace
{

constexpr std::string_view FOLDER = "controls/";
constexpr char const* OF_SENSOR = "sensor/config.json";
constexpr char const* VERSION = "1"; // the only version so far

} // namespace

std::string NameOf(std::string const& typeName)
{
    if (typeName == SENSOR)
    {
        return OF_SENSOR;
    }
    return std::string(FOLDER) + typeName + "/config.json";
}

std::string TypeNameOf(std::string const& name)
{
    if (name == OF_SENSOR)
    {
        return SENSOR;
    }
    if (!name.starts_with(FOLDER))
    {
        return name;
    }
    return name.substr(FOLDER.size(), name.find('/', FOLDER.size()) - FOLDER.size());
}

bool IsAccepted(nlohmann::json const& document)
{
    if (!document.is_object() || !document.contains("zu:control"))
    {
        return false;
    }
    auto const version = document.find("version");
    return version != document.end() && *version == VERSION;
}

bool IsAccepted(std::string const& text)
{
    return IsAccepted(nlohmann::json::parse(text, nullptr, false));
}

bool HasAccepted(ArchiveContents::Files const& files, std::string const& typeName)
{
    auto const file = files.find(NameOf(typeName));
    return file != files.end() && IsAccepted(file->second);
}

std::vector<std::string> HoldBack(ArchiveContents::Files& files, std::set<std::string> const& typeNames)
{
    std::vector<std::string> held;
    for (std::string const& typeName : typeNames)
    {
        if (!HasAccepted(files, typeName))
        {
            continue;
        }
        std::string& text = files.find(NameOf(typeName))->second;
        nlohmann::json document = nlohmann::json::parse(text);
        nlohmann::json& settings = document["zu:control"];
        if (settings.is_object() && settings.value("enabled", nlohmann::json()) == true)
        {
            settings["enabled"] = false;
            text = document.dump();
            held.push_back(typeName);
        }
    }
    return held;
}

void Enable(ArchiveContents::Files& files, std::map<std::string, std::string> const& wanted)
{
    for (auto const& [typeName, sentence] : wanted)
    {
        if (auto const file = files.find(NameOf(typeName)); file != files.end())
        {
            nlohmann::json document = nlohmann::json::parse(file->second);
            document["zu:control"]["enabled"] = true;
            file->second = document.dump();
        }
    }
}

} // namespace ZuHost::JobDocument
