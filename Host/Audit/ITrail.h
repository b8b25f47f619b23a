#pragma once

#include <string>

namespace ZuHost
{

/// One entry of the trail: what was done, by whom, from where, and with what result. All texts are UTF-8.
struct TrailEntry
{
    std::string who; ///< as `ZuRest::Caller::name`; a protocol ("ModbusTcp"); "host" for the host itself
    /// Protocol and address: "https 192.0.2.7"; for a PLC with its role: "ModbusTcp 192.0.2.9 as operator". Empty for the
    /// host itself.
    std::string from;
    std::string what;   ///< "POST /jobs/a/commands/load", "login", "start", "certificate"
    std::string before; ///< parameters before, as JSON; empty if there are none
    std::string after;  ///< parameters after, or arguments, in the same form
    std::string result; ///< "200", "401", "done", "refused: ..."

    /// The entry may come many times a second: entries that differ only in `before` and `after` may be gathered.
    bool comesInBursts = false;
};

/// Takes notes of what is done to the system.
class ITrail
{
public:
    virtual ~ITrail() = default;

    /// Any thread may call. Does not wait for the disk and does not throw: an entry that cannot be kept goes to the log.
    ///
    /// The trail masks members with the names of secrets and cuts long texts. Equal entries within a second may be
    /// gathered: the first is written at once, the others as one entry with their number.
    virtual void Note(TrailEntry entry) noexcept = 0;
};

} // namespace ZuHost
