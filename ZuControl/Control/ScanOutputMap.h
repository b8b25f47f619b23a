#pragma once

#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <map>
#include <string>

namespace ZuControl
{

/// The data sources that one protocol wants, by their numeric ids. It does not change once it is shared, and any thread
/// may read it.
///
/// The fan-out does not search this map for each item, but a plan of all maps together; see ScanOutputPlan.
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

    /// The text id of a numeric id; null for an id that is not wanted.
    std::string const* Text(uint64 numericId) const;

private:
    Texts const texts{};
};

} // namespace ZuControl
