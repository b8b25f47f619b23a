#include "ZuScan/ScanEngineInstance.h"

#include "ZuApi/Exception.h"

#include <algorithm>

namespace ZuScan::Internal
{

ScanEngineInstance::ScanEngineInstance(std::string engineId) : id(std::move(engineId))
{
}

ScanEngineInstance::~ScanEngineInstance() = default;

ScannerInstance& ScanEngineInstance::AddScanner(std::string const& scannerId, IScanner& scanner,
                                                ICommandTarget* commands)
{
    if (std::ranges::any_of(scanners, [&](auto const& known) { return known->Id() == scannerId; }))
    {
        ZU_THROW(Zu::Status::ALREADY_EXISTS, "Scan engine %s has a scanner %s already", id.c_str(), scannerId.c_str());
    }
    return *scanners.emplace_back(std::make_unique<ScannerInstance>(scannerId, scanner, commands));
}

std::string const& ScanEngineInstance::Id() const
{
    return id;
}

std::vector<std::string> ScanEngineInstance::ListScanners() const
{
    std::vector<std::string> ids;
    ids.reserve(scanners.size());
    for (auto const& scanner : scanners)
    {
        ids.push_back(scanner->Id());
    }
    return ids;
}

ScannerInstance& ScanEngineInstance::FindScanner(std::string const& scannerId) const
{
    for (auto const& scanner : scanners)
    {
        if (scanner->Id() == scannerId)
        {
            return *scanner;
        }
    }
    ZU_THROW(Zu::Status::NOT_FOUND, "Scan engine %s has no scanner %s", id.c_str(), scannerId.c_str());
}

} // namespace ZuScan::Internal
