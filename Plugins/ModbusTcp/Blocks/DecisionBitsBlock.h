#pragma once

#include "Plugins/ModbusTcp/Blocks/SourceListBlock.h"

namespace ModbusTcp
{

/// Registers: 0 the decisions of up to 16 measurements, the first source in bit 0; 1 which of them are valid. A decision
/// that is not valid is 0.
struct DecisionBitsBlock : public SourceListBlock
{
public:
    static constexpr char const* TYPE = "DecisionBits";
    static constexpr uint16 REGISTER_COUNT = 2;

    /// The source of `Serialize`.
    struct Bits
    {
        uint16 decisions;
        uint16 valid;

        bool operator==(Bits const&) const = default;
    };

    DecisionBitsBlock(ZuControl::ControlProtocol::RegisterBlockParams const& params,
                      ZuControl::ControlProtocol::ProtocolRegisterBlockInfo& usedInfo);
    ~DecisionBitsBlock() override;

    /// Throws `Zu::Status::WRONG_BUFFER_SIZE` for another size of source or destination.
    void Serialize(void* destination, size_t destinationSize, void const* source, size_t sourceSize) override;

    std::vector<ZuControl::ControlProtocol::RegisterField> Fields() const override;

    void Take(std::size_t place, Reading const& reading) override;
    Outcome EndSet() override;
    void Blank() override; ///< no decision is valid
    void Encode(std::span<uint8> bytes) override;

protected:
    uint64 Clear() override;

private:
    Bits bits{}; // a source that a set lacks keeps its bits
    Bits shown{};
};

} // namespace ModbusTcp
