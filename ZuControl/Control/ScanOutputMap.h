#pragma once

#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <map>
#include <string>

namespace ZuControl
{

/// The data sources that one protocol wants, by their numeric ids. Never changed once it is shared: any thread may read it.
///
/// What the fan-out looks up for each item is a plan of all maps together; see ScanOutputPlan.
class ZUCONTROL_INTERNAL_API ScanOutputMap final
{
public:
    /// Text ids by their numeric ids.
    using Texts = std::map<uint64, std::string>;

    ScanOutputMap();
    explicit ScanOutputMap(Texts wantedTexts);
    ~ScanOutputMap();

    ScanOutputMap(ScanOutputMap const&) = delete;
    ScanOutputMap& operator=(ScanOutputMap const&) = delete;

    /// The 64-bit FNV-1a hash of a data source's text id, as result items carry it.
    static uint64 NumericId(std::string const& dataSourceId);

    bool Empty() const
    {
        return texts.empty();
    }

    uint64 Count() const
    {
        return texts.size();
    }

    bool Contains(uint64 numericId) const
    {
        return texts.contains(numericId);
    }

    Texts const& AllTexts() const
    {
        return texts;
    }

    /// The text id behind a numeric one; null for one that is not wanted.
    std::string const* Text(uint64 numericId) const;

private:
    Texts const texts{};
};

} // namespace ZuControl
