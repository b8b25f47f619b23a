#pragma once

#include "wApi/wTypes.h"

#include <memory>
#include <span>
#include <string>
#include <vector>

namespace ZuControl::ControlProtocol
{
class ProtocolRegisterAssemblyBase;
struct ProtocolRegisterBlock;
} // namespace ZuControl::ControlProtocol

namespace ModbusTcp
{

/// Where which block lies at one moment: a flat view of an assembly that never changes, so that no reader of registers and
/// no result waits for the assembly's lock. It shares the blocks and must not outlive the assembly.
class RegisterLayout final
{
public:
    using Block = ZuControl::ControlProtocol::ProtocolRegisterBlock;

    /// Registers [first, first + count) of one block; no block when there is none of this kind.
    struct Place
    {
        bool Exists() const
        {
            return block != nullptr;
        }

        uint16 first = 0;
        uint16 count = 0;
        std::shared_ptr<Block> block;
    };

    struct ResultPlace : Place
    {
        uint64 dataSource = 0; ///< its number, as results carry it
    };

    /// Takes the assembly's lock for as long as it reads the list.
    static std::shared_ptr<RegisterLayout const>
    Take(ZuControl::ControlProtocol::ProtocolRegisterAssemblyBase& assembly);

    /// The blocks that follow this data source, in the order of their registers; none is common.
    std::span<ResultPlace const> Find(uint64 dataSource) const;

    /// The result blocks by the number of their data source.
    std::span<ResultPlace const> Results() const
    {
        return results;
    }

    // The first register of the result blocks and the one behind their last; equal when there is none.
    uint32 resultsFirst = 0;
    uint32 resultsEnd = 0;

    Place controlInput;
    Place controlOutput;
    Place system;
    Place scanner;
    std::string scannerId; ///< that the scanner block names; empty for the first scanner

    uint64 changeCount = 0; ///< of the assembly when this was taken; a later one is larger

private:
    /// Where the results of a data source lie in the list; free without any.
    struct Slot
    {
        uint64 dataSource = 0;
        uint32 first = 0;
        uint32 count = 0;
    };

    void Enter(std::shared_ptr<Block> const& block);
    void BuildIndex();

    uint64 SlotOf(uint64 dataSource) const
    {
        return (dataSource ^ (dataSource >> 32)) & (slots.size() - 1);
    }

    std::vector<ResultPlace> results;               // by data source
    std::vector<Slot> slots = std::vector<Slot>(1); // open addressing, at most half full, so that every walk ends
};

} // namespace ModbusTcp
