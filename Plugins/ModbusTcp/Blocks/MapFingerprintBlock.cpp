#include "Plugins/ModbusTcp/Blocks/MapFingerprintBlock.h"

#include "Plugins/ModbusTcp/Blocks/LayoutFacts.h"
#include "ZuApi/Exception.h"

namespace ModbusTcp
{

using namespace ZuControl::ControlProtocol;

MapFingerprintBlock::MapFingerprintBlock(RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo)
    : ProtocolRegisterBlock(params, usedInfo)
{
}

MapFingerprintBlock::~MapFingerprintBlock() = default;

void MapFingerprintBlock::Serialize(void* destination, size_t destinationSize, void const* source, size_t sourceSize)
{
    if (destination == nullptr || destinationSize != 2 * REGISTERS || source == nullptr ||
        sourceSize != sizeof(LayoutFacts))
    {
        ZU_THROW(Zu::Status::WRONG_BUFFER_SIZE);
    }
    ValueEncoder().Write(static_cast<uint8*>(destination), static_cast<LayoutFacts const*>(source)->fingerprint);
}

std::vector<RegisterField> MapFingerprintBlock::Fields() const
{
    FieldList list(*this);
    RegisterField& fingerprint = list.Number("fingerprint", FieldType::UDINT, 0);
    fingerprint.role = FieldRole::FINGERPRINT;
    fingerprint.comment = "of the map; compare it with the one that the program was made for";
    return list.Take();
}

} // namespace ModbusTcp
