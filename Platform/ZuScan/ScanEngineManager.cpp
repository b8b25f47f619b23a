#include "ZuScan/ScanEngineManager.h"

#include "ZuApi/Exception.h"

#include <algorithm>

namespace ZuScan::Internal
{

ScanEngineManager::ScanEngineManager() = default;

ScanEngineManager::~ScanEngineManager() = default;

ScanEngineInstance& ScanEngineManager::AddEngine(std::string const& name)
{
    if (std::ranges::any_of(engines, [&](auto const& known) { return known->Id() == name; }))
    {
        ZU_THROW(Zu::Status::ALREADY_EXISTS, "There is a scan engine %s already", name.c_str());
    }
    return *engines.emplace_back(std::make_unique<ScanEngineInstance>(name));
}

std::vector<std::string> ScanEngineManager::List() const
{
    std::vector<std::string> names;
    names.reserve(engines.size());
    for (auto const& engine : engines)
    {
        names.push_back(engine->Id());
    }
    return names;
}

ScanEngineInstance& ScanEngineManager::GetInstance(std::string const& name) const
{
    for (auto const& engine : engines)
    {
        if (engine->Id() == name)
        {
            return *engine;
        }
    }
    ZU_THROW(Zu::Status::NOT_FOUND, "There is no scan engine %s", name.c_str());
}

} // namespace ZuScan::Internal
