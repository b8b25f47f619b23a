#pragma once

#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ZuTest
{

using Bytes = std::vector<uint8>;

/// The record of a block type: `registers` registers, blocks of class `Block`.
template <typename Block = ZuControl::ControlProtocol::ProtocolRegisterBlock>
ZuControl::ControlProtocol::RegisterBlockInfoParams TypeParams(std::string type, uint16 registers)
{
    ZuControl::ControlProtocol::RegisterBlockInfoParams params;
    params.displayName = type + " name";
    params.type = std::move(type);
    params.registerCount = registers;
    params.maxInstanceCount = 65534;
    params.factory = std::make_shared<ZuControl::ControlProtocol::ProtocolRegisterBlockFactory<Block>>();
    return params;
}

/// A type of such blocks, for protocols of this layout.
template <typename Block>
std::unique_ptr<ZuControl::ControlProtocol::ProtocolRegisterBlockInfo>
MakeType(uint16 registers, uint8 bytesPerRegister, bool isBigEndian, bool hasDataSource = false)
{
    auto params = TypeParams<Block>("Test", registers);
    params.bytesPerRegister = bytesPerRegister;
    params.isProtocolBigEndian = isBigEndian;
    params.hasDataSource = hasDataSource;
    return std::make_unique<ZuControl::ControlProtocol::ProtocolRegisterBlockInfo>(params);
}

/// The registers after the block has written into them. They hold `fill` before, so that a byte left out shows. Expects
/// that the block leaves the bytes behind them unchanged.
inline Bytes Written(ZuControl::ControlProtocol::ProtocolRegisterBlock& block, size_t size, void const* source,
                     size_t sourceSize, uint8 fill = 0xAA)
{
    Bytes const guard(8, fill);
    Bytes registers(size + guard.size(), fill);
    block.Serialize(registers.data(), size, source, sourceSize);
    auto const end = registers.begin() + static_cast<std::ptrdiff_t>(size);
    EXPECT_EQ(Bytes(end, registers.end()), guard);
    registers.erase(end, registers.end());
    return registers;
}

} // namespace ZuTest
