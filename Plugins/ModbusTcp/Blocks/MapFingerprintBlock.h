#pragma once

#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/ControlProtocol/RegisterField.h"
#include "wApi/wTypes.h"

#include <cstddef>
#include <vector>

namespace ModbusTcp
{

/// Registers: 0 and 1 the fingerprint of the service's layout, by which a PLC recognises the map that it was made for.
struct MapFingerprintBlock : public ZuControl::ControlProtocol::ProtocolRegisterBlock,
                             public ZuControl::ControlProtocol::IDescribedBlock
{
public:
    static constexpr char const* TYPE = "MapFingerprint";
    static constexpr uint16 REGISTERS = 2;

    MapFingerprintBlock(ZuControl::ControlProtocol::RegisterBlockParams const& params,
                        ZuControl::ControlProtocol::ProtocolRegisterBlockInfo& usedInfo);
    ~MapFingerprintBlock() override;

    /// `source` is a LayoutFacts. Throws `Zu::Status::WRONG_BUFFER_SIZE` for another size of source or destination.
    void Serialize(void* destination, size_t destinationSize, void const* source, size_t sourceSize) override;

    std::vector<ZuControl::ControlProtocol::RegisterField> Fields() const override;
};

} // namespace ModbusTcp
