#pragma once

#include "ZuScan/ScannerInstance.h"

#include <memory>

namespace ZuScan::Internal
{

/// A scan engine and its scanners.
///
/// The host fills it before other threads can access it. Afterwards any thread may read it.
class ZUPLATFORM_API ScanEngineInstance final
{
public:
    explicit ScanEngineInstance(std::string engineId);
    ~ScanEngineInstance();

    ScanEngineInstance(ScanEngineInstance const&) = delete;
    ScanEngineInstance& operator=(ScanEngineInstance const&) = delete;

    /// Makes and appends a scanner; the arguments are those of the `ScannerInstance` constructor. Throws
    /// `Zu::Status::ALREADY_EXISTS` if the id is in use.
    ScannerInstance& AddScanner(std::string const& scannerId, IScanner& scanner, ICommandTarget* commands);

    /// The engine's name.
    std::string const& Id() const;

    /// The ids in order of addition.
    std::vector<std::string> ListScanners() const;

    /// Throws `Zu::Status::NOT_FOUND` for an unknown id.
    ScannerInstance& FindScanner(std::string const& scannerId) const;

private:
    std::string const id;
    std::vector<std::unique_ptr<ScannerInstance>> scanners; // few: searched in order
};

} // namespace ZuScan::Internal
