#pragma once

#include "ZuScan/ScannerInstance.h"

#include <memory>

namespace ZuScan::Internal
{

/// A scan engine and its scanners.
///
/// The host fills it before other threads see it; from then on any thread may look things up.
class ZUPLATFORM_API ScanEngineInstance final
{
public:
    explicit ScanEngineInstance(std::string engineId);
    ~ScanEngineInstance();

    ScanEngineInstance(ScanEngineInstance const&) = delete;
    ScanEngineInstance& operator=(ScanEngineInstance const&) = delete;

    /// Makes a scanner behind those that are there; see the constructor of ScannerInstance. Throws -987 for an id that is taken.
    ScannerInstance& AddScanner(std::string const& scannerId, IScanner& scanner, ICommandTarget* commands);

    /// The engine's name.
    std::string const& Id() const;

    /// The ids in order of addition.
    std::vector<std::string> ListScanners() const;

    /// Throws -999 for an id that is not there.
    ScannerInstance& FindScanner(std::string const& scannerId) const;

private:
    std::string const id;
    std::vector<std::unique_ptr<ScannerInstance>> scanners; // few: searched in order
};

} // namespace ZuScan::Internal
