// The changes of ProtocolRegisterAssemblyBase: RegisterRules decides, the operations here are its steps.

#include "ZuApi/Exception.h"
#include "ZuApi/Logging.h"
#include "ZuApi/Threads/Locker.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"
#include "ZuControl/ControlProtocol/RegisterRules.h"

namespace ZuControl::ControlProtocol
{

template <typename Work>
auto ProtocolRegisterAssemblyBase::Locked(Work const& work)
{
    Zu::Locker const guard(lock);
    return work();
}

void ProtocolRegisterAssemblyBase::Add(Zu::Params::Group& params)
{
    RegisterRules::Add(*this, dynamic_cast<AddBlockParams&>(params));
}

void ProtocolRegisterAssemblyBase::Remove(Zu::Params::Group const& params)
{
    RegisterRules::Remove(*this, dynamic_cast<RemoveBlockParams const&>(params));
}

void ProtocolRegisterAssemblyBase::Compact(Zu::Params::Group const& params)
{
    RegisterRules::Compact(*this, dynamic_cast<CompactBlocksParams const&>(params));
}

void ProtocolRegisterAssemblyBase::Update(Zu::Params::Group const& params)
{
    RegisterRules::Update(*this, dynamic_cast<UpdateBlockParams const&>(params));
}

/// A refused entry does not stop the others.
void ProtocolRegisterAssemblyBase::Refuse(uint64 /*entry*/, Zu::Exception const& exception)
{
    ZU_LOG_USER_WARNING("%1$s", exception.what());
}

std::shared_ptr<ProtocolRegisterBlock> ProtocolRegisterAssemblyBase::MakeBlock(ProtocolRegisterBlockInfo& info,
                                                                               RegisterBlockParams const& params)
{
    return info.ConstructBlock(params);
}

ProtocolRegisterBlockInfo* ProtocolRegisterAssemblyBase::FindSupportedType(std::string const& type)
{
    for (auto const& supported : supportedTypes)
    {
        if (supported->Type() == type)
        {
            return supported.get();
        }
    }
    return nullptr;
}

void ProtocolRegisterAssemblyBase::FormatBlockParams(ProtocolRegisterBlockInfo* info, RegisterBlockParams& params,
                                                     uint16& endAddress)
{
    RegisterRules::FormatBlockParams(*this, *info, params, endAddress);
}

ProtocolRegisterAssemblyBase::Position
ProtocolRegisterAssemblyBase::GetInsertPosition(uint16 startId, uint16 endId, bool autoShift, uint16 excludedOutputId)
{
    return RegisterRules::GetInsertPosition(*this, startId, endId, autoShift, excludedOutputId);
}

void ProtocolRegisterAssemblyBase::ShiftRegisterAddresses(Position position, uint16 startId, uint16 endId,
                                                          uint16 excludedOutputId)
{
    RegisterRules::ShiftRegisterAddresses(*this, position, startId, endId, excludedOutputId);
}

bool ProtocolRegisterAssemblyBase::IsBlockOverlapping(uint16 startId, uint16 endId,
                                                      std::shared_ptr<ProtocolRegisterBlock> block) const
{
    return Placement::IsOverlapping(startId, endId, *block);
}

bool ProtocolRegisterAssemblyBase::IsValidOutputId(uint16 id, uint16 registerCount) const
{
    return RegisterRules::IsValidOutputId(*this, id, registerCount);
}

uint16 ProtocolRegisterAssemblyBase::GetNextRegisterBlockOutputId()
{
    return RegisterRules::GetNextRegisterBlockOutputId(*this);
}

uint16 ProtocolRegisterAssemblyBase::UsedRegistersCount(Position position)
{
    return placement.UsedRegisters(position);
}

bool ProtocolRegisterAssemblyBase::hasGap(Position position, uint16 startId, uint16 endId)
{
    return uint32{UsedRegistersCount(position)} + static_cast<uint16>(endId - startId + 1) <=
           static_cast<uint16>(OutputIdMax() - startId + 1);
}

void ProtocolRegisterAssemblyBase::UpdateBlockProperties(Position position, UpdateBlockParams const& params)
{
    RegisterRules::UpdateBlockProperties(*this, position, params);
}

} // namespace ZuControl::ControlProtocol
