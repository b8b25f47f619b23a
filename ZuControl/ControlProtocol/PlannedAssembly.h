#pragma once

#include "ZuControl/ControlProtocol/LayoutCopy.h"
#include "ZuControl/ControlProtocol/PlannedBlock.h"
#include "ZuControl/ControlProtocol/RegisterPlacement.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <deque>
#include <memory>
#include <string>

namespace Zu
{
class Exception;
} // namespace Zu

namespace ZuControl
{
class IControlActionTarget;
} // namespace ZuControl

namespace ZuControl::ControlProtocol
{

class IProtocolRegisterAssembly;
struct RegisterBlockParams;
struct UpdateBlockParams;

/// The plan of a register assembly: records in place of its blocks, under the rules of ProtocolRegisterAssemblyBase.
class ZUCONTROL_INTERNAL_API PlannedAssembly final : public LayoutCopy
{
public:
    /// `usedTarget` makes the argument records; null for a plan without commands.
    explicit PlannedAssembly(IProtocolRegisterAssembly& original, IControlActionTarget const* usedTarget = nullptr);
    ~PlannedAssembly() override;

    std::shared_ptr<Zu::Params::Group> ActionParams(std::string const& actionId) const override;
    void InvokeAction(std::string const& actionId, Zu::Params::Group const& params) override;
    Layout Read() const override;

    void Add(Zu::Params::Group& params);
    void Remove(Zu::Params::Group const& params);
    void Compact(Zu::Params::Group const& params);
    void Update(Zu::Params::Group const& params);

private:
    friend struct RegisterRules; // which works on the members from here on

    using Placement = RegisterPlacement<PlannedBlock*>;
    using Position = Placement::Position;

    template <typename Work>
    auto Locked(Work const& work);
    void Refuse(uint64 entry, Zu::Exception const& exception);
    PlannedBlock* MakeBlock(PlannedType& type, RegisterBlockParams const& params);
    PlannedType* FindSupportedType(std::string const& type);

    void FormatBlockParams(PlannedType* type, RegisterBlockParams& params, uint16& endAddress);
    Position GetInsertPosition(uint16 startId, uint16 endId, bool autoShift, uint16 excludedOutputId);
    void ShiftRegisterAddresses(Position position, uint16 startId, uint16 endId, uint16 excludedOutputId);
    static bool IsBlockOverlapping(uint16 startId, uint16 endId, PlannedBlock const* block);
    bool IsValidOutputId(uint16 id, uint16 registerCount) const;
    uint16 GetNextRegisterBlockOutputId();
    uint16 UsedRegistersCount(Position position);
    void UpdateBlockProperties(Position position, UpdateBlockParams const& params);
    uint16 UsedRegisterCount();
    void RefreshPlacement();
    static void AddToUsedRegisters(int32 registers);
    static void NoteChange();

    bool IsGlobal() const;
    uint16 OutputIdMin() const;
    uint16 OutputIdMax() const;

    IControlActionTarget const* const target;
    Layout original; // without entries
    std::deque<PlannedType> types;
    std::deque<PlannedBlock> blocks; // all that there ever were: the placement points to them
    Placement placement;
};

} // namespace ZuControl::ControlProtocol
