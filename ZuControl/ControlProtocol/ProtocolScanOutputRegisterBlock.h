#pragma once

#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/Export.h"
#include "ZuCore/ResultItem.h"
#include "wApi/wHandle.h"
#include "wApi/wTypes.h"

#include <string>

namespace ZuControl::ControlProtocol
{

/// Base of the blocks that put a result of the scan pipeline into registers: unwraps array messages, sorts out null
/// messages and hands the others to the operation for their type.
///
/// A block has a data source, which names the result that it follows. Threads: a reader of `DataSource` needs the
/// assembly's lock, under which it changes.
struct ZUCONTROL_API ProtocolScanOutputRegisterBlock : public ProtocolRegisterBlock
{
public:
    /// What `Serialize` takes as source.
    struct DefaultScanOutputInputData
    {
        ZuCore::ResultItem resultItem; ///< borrowed for the call
        uint32 serializeMode;          ///< 1: of a stamp the counter alone
    };

    static constexpr uint32 SERIALIZE_COUNTER_ONLY = 1;

    /// Throws -980 for a type without data source, behind what the base refuses.
    ProtocolScanOutputRegisterBlock(RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo);
    ~ProtocolScanOutputRegisterBlock() override;

    /// `source` is a DefaultScanOutputInputData. Throws -992 for wrong sizes and for an array without elements, -996 for a
    /// type of message that the block does not take.
    void Serialize(void* destination, size_t destinationSize, void const* source, size_t sourceSize) override;
    void SetDataSource(std::string const& newDataSource) override;
    std::string const& DataSource() const override;

    // A concrete block overrides what it takes; `offset` is where the block begins in the buffer. Here they throw -996.
    virtual void SerializeMeasurementMsg(uint8* buffer, size_t offset, DefaultScanOutputInputData const* data);
    virtual void SerializeStampMsg(uint8* buffer, size_t offset, DefaultScanOutputInputData const* data);
    virtual void SerializeNullMsg(uint8* buffer, size_t offset);

protected:
    /// The message of an item, borrowed; null when there is none.
    static void* MessageOf(ZuCore::ResultItem item);

    /// Refuses with -992 what does not fit; see `FieldsFit`.
    void CheckFit(size_t endOfFields) const;

    Zu::Params::Value<std::string> dataSource;

private:
    void SerializeScanData(uint8* buffer, DefaultScanOutputInputData const* data);
    void SerializeData(uint8* buffer, size_t offset, DefaultScanOutputInputData const* data);
    void SerializeMessage(uint8* buffer, size_t offset, DefaultScanOutputInputData const& data);
    static wHandle<ZuCore::ResultItemObject> FirstElementOf(ZuCore::ResultItem item);
    bool IsMsgSetNullMsg(void* msg) const;
    bool IsResultItemNullMsg(void* item) const;
};

static_assert(sizeof(ProtocolScanOutputRegisterBlock::DefaultScanOutputInputData) == 16);

} // namespace ZuControl::ControlProtocol
