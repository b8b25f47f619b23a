#pragma once

#include "Plugins/ModbusTcp/ModbusMetrics.h"
#include "Plugins/ModbusTcp/RegisterImage.h"
#include "Plugins/ModbusTcp/ResultEncoder.h"
#include "Support/TestFrames.h"
#include "Tests/Plugins/ModbusTcp/BlockFixture.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

#include <memory>
#include <string>
#include <vector>

namespace ModbusTcp
{

/// An encoder of the blocks that a test places, with its image.
class EncoderFixture : public BlockFixture
{
protected:
    using Registers = std::vector<uint16>;

    void Install()
    {
        encoder.Install(RegisterLayout::Take(assembly));
    }

    void Process(ZuTest::TestFrame const& frame)
    {
        ZuTest::TestBatch batch;
        batch.Add(frame);
        encoder.Process(batch.List());
    }

    Registers Read(uint16 first, std::size_t count)
    {
        Registers registers(count, 0xAAAA);
        image->Read(first, registers);
        return registers;
    }

    void Move(uint16 from, uint16 to, std::string const& dataSource = {})
    {
        ZuControl::ControlProtocol::UpdateBlockParams params;
        params.outputId.Set(from);
        params.newParams.outputId.Set(to);
        params.newParams.dataSource.Set(dataSource);
        assembly.Update(params);
    }

    std::unique_ptr<RegisterImage> image = std::make_unique<RegisterImage>();
    ModbusCounters counters;
    ResultEncoder encoder{*image, counters};
};

} // namespace ModbusTcp
