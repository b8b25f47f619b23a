#pragma once

#include "Plugins/ModbusTcp/Blocks/IModbusBlock.h"
#include "Plugins/ModbusTcp/Blocks/LayoutFacts.h"
#include "ZuControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "wApi/wTypes.h"

#include <memory>
#include <span>
#include <string>
#include <vector>

namespace ZuControl::ControlProtocol
{
class ProtocolRegisterAssemblyBase;
} // namespace ZuControl::ControlProtocol

namespace ModbusTcp
{

struct SourceListBlock;

/// An immutable list of an assembly's blocks and their registers. With it neither reads nor results wait for the
/// assembly's lock. It shares the blocks and must not outlive the assembly.
class RegisterLayout final
{
public:
    using Block = ZuControl::ControlProtocol::ProtocolRegisterBlock;

    /// Registers [first, first + count) of a block; `block` is null if the assembly has none of this kind.
    struct Place
    {
        bool Exists() const
        {
            return block != nullptr;
        }

        /// Whether the block exists and registers [address, address + size) lie within it.
        bool Covers(uint16 address, std::size_t size) const
        {
            return Exists() && address >= first && address + size <= std::size_t{first} + count;
        }

        /// Encodes in the order that the block had when the list was copied. Throws as the block does.
        void Serialize(std::span<uint8> bytes, void const* source, std::size_t sourceSize) const
        {
            if (encoder != nullptr)
            {
                encoder->SerializeIn(ownOrder, bytes, source, sourceSize);
                return;
            }
            block->Serialize(bytes.data(), bytes.size(), source, sourceSize);
        }

        uint16 first = 0;
        uint16 count = 0;
        IModbusBlock::Order ownOrder; ///< when the list was copied
        std::shared_ptr<Block> block;
        IModbusBlock* encoder = nullptr; ///< the block; null for a block without an order of its own
    };

    struct ResultPlace : Place
    {
        uint64 dataSource = 0;           ///< the number of the source in results
        SourceListBlock* list = nullptr; ///< the block, if its data source is a list
        std::size_t placeInList = 0;
    };

    /// A block whose data source is a list.
    struct ListPlace : Place
    {
        SourceListBlock* list = nullptr; ///< the block
        std::string sources;             ///< its data source when the list of blocks was copied
    };

    /// Holds the assembly's lock while it copies the list.
    static std::shared_ptr<RegisterLayout const>
    Take(ZuControl::ControlProtocol::ProtocolRegisterAssemblyBase& assembly);

    /// The blocks of this data source, sorted by their registers; usually empty.
    std::span<ResultPlace const> Find(uint64 dataSource) const;

    /// The result blocks, sorted by the number of their data source. A block with a list is there once for each source.
    std::span<ResultPlace const> Results() const
    {
        return results;
    }

    /// The result blocks with lists of sources.
    std::span<ListPlace const> Lists() const
    {
        return lists;
    }

    /// The blocks whose content follows from `facts`.
    std::span<Place const> Constants() const
    {
        return constants;
    }

    LayoutFacts facts;

    // Result blocks and constant blocks lie in registers [imageFirst, imageEnd); equal if there is none.
    uint32 imageFirst = 0;
    uint32 imageEnd = 0;

    Place controlInput;
    Place controlOutput;
    Place system;
    Place scanner;
    Place stateBits;
    std::string scannerId; ///< of the scanner block; empty for the first scanner

    uint64 changeCount = 0; ///< change count of the assembly at the copy; a later layout has a larger one

private:
    /// The range of a data source in `results`; unused if count is 0.
    struct Slot
    {
        uint64 dataSource = 0;
        uint32 first = 0;
        uint32 count = 0;
    };

    void Enter(std::shared_ptr<Block> const& block);
    void EnterResult(Place const& place);
    void AddToImage(Place const& place);
    void BuildIndex();

    uint64 SlotOf(uint64 dataSource) const
    {
        return (dataSource ^ (dataSource >> 32)) & (slots.size() - 1);
    }

    std::vector<Place> constants;
    std::vector<ResultPlace> results;               // sorted by data source
    std::vector<ListPlace> lists;                   // in the order of their registers
    std::vector<Slot> slots = std::vector<Slot>(1); // open addressing, at most half full, so each probe ends
};

} // namespace ModbusTcp
