#pragma once

#include "Plugins/ModbusTcp/Blocks/BlockArguments.h"
#include "Plugins/ModbusTcp/ModbusBlocks.h"
#include "Support/TestFrames.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace ModbusTcp
{

/// An assembly with the block types of the service, to place blocks in.
class BlockFixture : public testing::Test
{
protected:
    using Block = ZuControl::ControlProtocol::ProtocolRegisterBlock;

    BlockFixture()
    {
        AddModbusBlockTypes(assembly);
    }

    std::shared_ptr<Block> Place(std::string const& type, uint16 outputId, std::string const& dataSource = {},
                                 std::string const& order = {})
    {
        ModbusAddBlockParams params;
        auto& added = params.blocks.Add();
        dynamic_cast<ModbusBlockParams&>(added).order.Set(order);
        added.type.Set(type);
        added.outputId.Set(outputId);
        added.dataSource.Set(dataSource);
        assembly.Add(params);
        for (auto const& block : assembly.FindAddedBlocksOfTypes({type}))
        {
            if (block->OutputId() == outputId)
            {
                return block;
            }
        }
        ADD_FAILURE() << type << " is not at " << outputId;
        return nullptr;
    }

    void SetOrder(uint16 outputId, std::string const& order)
    {
        ModbusUpdateBlockParams params;
        params.outputId.Set(outputId);
        params.order.Set(order);
        assembly.Update(params);
    }

    /// The registers of `record` as a Modbus client reads them. They hold 0xAAAA before, which shows in unwritten
    /// registers.
    template <typename Record>
    static std::vector<uint16> Encode(Block& block, Record const& record)
    {
        std::vector<uint8> bytes(2u * block.RegisterCount(), 0xAA);
        block.Serialize(bytes.data(), bytes.size(), &record, sizeof record);
        return RegistersOf(bytes);
    }

    static std::vector<uint16> EncodeFirst(Block& block, ZuTest::TestFrame const& frame)
    {
        using ZuControl::ControlProtocol::ProtocolScanOutputRegisterBlock;
        return Encode(block, ProtocolScanOutputRegisterBlock::DefaultScanOutputInputData{frame.First(), 0});
    }

    static std::vector<uint16> RegistersOf(std::vector<uint8> const& bytes)
    {
        std::vector<uint16> registers(bytes.size() / 2);
        for (std::size_t i = 0; i < registers.size(); ++i)
        {
            registers[i] = static_cast<uint16>(bytes[2 * i] | bytes[2 * i + 1] << 8);
        }
        return registers;
    }

    ZuControl::ControlProtocol::ProtocolRegisterAssemblyBase assembly{true, 0, LAST_REGISTER};
};

} // namespace ModbusTcp
