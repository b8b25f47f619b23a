#pragma once

#include "wApi/wTypes.h"

#include <limits>
#include <string>
#include <vector>

namespace ZuControl::ControlProtocol
{

/// One block of an assembly or one item of an output map, as a PLC depends on it.
struct LayoutEntry
{
    static constexpr uint64 NEW = std::numeric_limits<uint64>::max();

    uint64 origin = NEW;  ///< the index of this entry before a preview
    uint16 outputId = 0;  ///< where ids are numbers
    std::string textId;   ///< where ids are texts
    uint16 registers = 1; ///< how many addresses, or ids, the entry takes
    std::string source;

    // Of a block.
    std::string type;
    std::string scannerId;
    std::string displayName;
    uint8 bytesPerRegister = 0;
    bool isBigEndian = false;
    bool areBytesSwapped = false; ///< in each register the least significant byte comes first

    // Of an item in a register map.
    uint16 outputSize = 0;
    uint16 dataOffset = 0;
    uint16 dataLength = 0;
};

/// A register assembly or an output map at one moment.
struct Layout
{
    /// The numbers are part of the fingerprint's recipe.
    enum class Kind : uint8
    {
        BLOCKS = 1,    ///< a register assembly
        NUMBERS = 2,   ///< an output map with numbers as ids
        REGISTERS = 3, ///< an output map with register addresses as ids
        TEXTS = 4      ///< an output map with texts as ids
    };

    Kind kind = Kind::BLOCKS;
    std::string id; ///< of the assembly; empty for an output map
    /// Whether ids are addresses in a space from `first` to `last`; otherwise the entries only have to fit in the range
    /// of ids.
    bool isAddressed = false;
    uint32 first = 0;
    uint32 last = 65534;
    uint16 itemSize = 0;              ///< of a register map
    std::vector<LayoutEntry> entries; ///< in the order of the list
};

} // namespace ZuControl::ControlProtocol
