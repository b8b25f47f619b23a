#pragma once

#include "Plugins/Common/StateFetcher.h"
#include "ZuControl/ControlProtocol/ControlRegisterCommandData.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/ControlProtocol/RegisterField.h"
#include "wApi/wTypes.h"

#include <cstddef>
#include <vector>

namespace ModbusTcp
{

/// The states of the sensor, one in each bit of one register: for reading them as discrete inputs.
struct StateBitsBlock : public ZuControl::ControlProtocol::ProtocolRegisterBlock,
                        public ZuControl::ControlProtocol::IDescribedBlock
{
public:
    static constexpr char const* TYPE = "StateBits";
    static constexpr uint16 REGISTER_COUNT = 1;

    enum Bit : uint8
    {
        READY = 0,
        RUNNING = 1,
        ERROR = 2,
        ALIGNED = 3,
        ALIGNING = 4,
        LASER_ON = 5,
        LINKED = 6,
        PROBLEMS = 7,
        COMMAND_RUNS = 8,
        COMMAND_DONE = 9,
        COMMAND_FAILED = 10,
        RESULT_WAITS = 11,
        RESULTS_LOST = 12
    };

    /// The source of `Serialize`.
    struct States
    {
        PluginCommon::StateFetcher::State sensor;
        ZuControl::ControlProtocol::ControlRegisterCommandStatus command; ///< of the last command
        bool hasResults;                                                  ///< a result queue holds a result
        bool hasLostResults; ///< a result queue has lost results since it was empty
    };

    StateBitsBlock(ZuControl::ControlProtocol::RegisterBlockParams const& params,
                   ZuControl::ControlProtocol::ProtocolRegisterBlockInfo& usedInfo);
    ~StateBitsBlock() override;

    /// Throws `Zu::Status::WRONG_BUFFER_SIZE` for another size of source or destination.
    void Serialize(void* destination, std::size_t destinationSize, void const* source, std::size_t sourceSize) override;

    std::vector<ZuControl::ControlProtocol::RegisterField> Fields() const override;

    static uint16 BitsOf(States const& states);
};

} // namespace ModbusTcp
