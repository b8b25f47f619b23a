#pragma once

#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/Export.h"
#include "ZuCore/ResultItem.h"
#include "wApi/wObject.h"
#include "wApi/wTypes.h"

#include <string>

namespace ZuControl::ControlProtocol
{

/// The base of the blocks that put a result of the scan pipeline into registers. It unwraps array messages, recognises
/// null messages and calls the operation for the type of the message.
///
/// A block has a data source, which names the result that it shows. Threads: the data source changes under the
/// assembly's lock, which a reader of `DataSource` holds too.
struct ZUCONTROL_API ProtocolScanOutputRegisterBlock : public ProtocolRegisterBlock
{
public:
    /// The source of `Serialize`.
    struct DefaultScanOutputInputData
    {
        ZuCore::ResultItem resultItem; ///< valid for the call
        uint32 serializeMode;          ///< SERIALIZE_COUNTER_ONLY: of a stamp the counter alone
    };

    static constexpr uint32 SERIALIZE_COUNTER_ONLY = 1;

    /// Throws as the base does, and then `Zu::Status::ID_CONFLICT` for a type without data source.
    ProtocolScanOutputRegisterBlock(RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo);
    ~ProtocolScanOutputRegisterBlock() override;

    /// `source` is a DefaultScanOutputInputData. Throws `Zu::Status::WRONG_BUFFER_SIZE` for wrong sizes and for an
    /// array without elements, `Zu::Status::NOT_SUPPORTED` for a type of message that the block does not accept.
    void Serialize(void* destination, size_t destinationSize, void const* source, size_t sourceSize) override;
    void SetDataSource(std::string const& newDataSource) override;
    std::string const& DataSource() const override;

    // A derived block overrides the operations for the messages that it accepts. `offset` is the start of the block in
    // the buffer. The base throws `Zu::Status::NOT_SUPPORTED`.
    virtual void SerializeMeasurementMsg(uint8* buffer, size_t offset, DefaultScanOutputInputData const* data);
    virtual void SerializeStampMsg(uint8* buffer, size_t offset, DefaultScanOutputInputData const* data);
    virtual void SerializeNullMsg(uint8* buffer, size_t offset);

protected:
    /// The message of an item, which stays the item's; null when there is none.
    static void* MessageOf(ZuCore::ResultItem item);

    /// Throws `Zu::Status::WRONG_BUFFER_SIZE` for fields that do not fit; see `FieldsFit`.
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
