#pragma once

#include "ZuScan/ScanEngineInstance.h"

namespace ZuScan::Internal
{

/// All scan engines of the application.
///
/// The host fills it before other threads see it; from then on any thread may look things up.
class ZUPLATFORM_API ScanEngineManager final
{
public:
    ScanEngineManager();
    ~ScanEngineManager();

    ScanEngineManager(ScanEngineManager const&) = delete;
    ScanEngineManager& operator=(ScanEngineManager const&) = delete;

    /// Makes an engine behind those that are there. Throws -987 for a name that is taken.
    ScanEngineInstance& AddEngine(std::string const& name);

    /// The names in order of addition.
    std::vector<std::string> List() const;

    /// Throws -999 for a name that is not there.
    ScanEngineInstance& GetInstance(std::string const& name) const;

private:
    std::vector<std::unique_ptr<ScanEngineInstance>> engines; // few: searched in order
};

} // namespace ZuScan::Internal
