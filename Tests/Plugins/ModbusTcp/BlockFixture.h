#pragma once

#include "Plugins/ModbusTcp/ModbusBlocks.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

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

    std::shared_ptr<Block> Place(std::string const& type, uint16 outputId, std::string const& dataSource = {})
    {
        ZuControl::ControlProtocol::AddBlockParams params;
        auto& added = params.blocks.Add();
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

    ZuControl::ControlProtocol::ProtocolRegisterAssemblyBase assembly{true, 0, LAST_REGISTER};
};

} // namespace ModbusTcp
