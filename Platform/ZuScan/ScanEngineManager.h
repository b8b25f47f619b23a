#pragma once

#include "ZuScan/ScanEngineInstance.h"

namespace ZuScan::Internal
{

/// All scan engines of the application.
///
/// The host fills it before other threads can access it. Afterwards any thread may read it.
class ZUPLATFORM_API ScanEngineManager final
{
public:
    ScanEngineManager();
    ~ScanEngineManager();

    ScanEngineManager(ScanEngineManager const&) = delete;
    ScanEngineManager& operator=(ScanEngineManager const&) = delete;

    /// Makes and appends an engine. Throws `Zu::Status::ALREADY_EXISTS` if the name is in use.
    ScanEngineInstance& AddEngine(std::string const& name);

    /// The names in order of addition.
    std::vector<std::string> List() const;

    /// Throws `Zu::Status::NOT_FOUND` for an unknown name.
    ScanEngineInstance& GetInstance(std::string const& name) const;

private:
    std::vector<std::unique_ptr<ScanEngineInstance>> engines; // few: searched in order
};

} // namespace ZuScan::Internal
