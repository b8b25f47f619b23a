#pragma once

#include "wApi/wTypes.h"

#include <string>
#include <utility>
#include <vector>

namespace ZuControl::ControlProtocol
{

/// The refusal of one entry in the list of a command. The command itself hides it in the log and takes the next entry.
struct EntryRefusal
{
    uint64 entry = 0; ///< its index in the list; 0 for a command without a list
    int32 status = 0;
    std::string text;

    bool operator==(EntryRefusal const&) const = default;
};

/// Collects the refusals of a command that runs as a preview, in place of the log.
struct RefusalNotes
{
    void Add(int32 status, std::string text)
    {
        refusals.push_back({entry, status, std::move(text)});
    }

    uint64 entry = 0; ///< the entry that the command is working on
    std::vector<EntryRefusal> refusals;
};

} // namespace ZuControl::ControlProtocol
