#pragma once

#include "ZuControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"
#include "ZuControl/ControlProtocol/RegisterField.h"
#include "ZuCore/ResultItem.h"
#include "wApi/wTypes.h"
#include "wBeacon/wMsgInfo.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ModbusTcp
{

/// The base of the blocks that show several sources in one block. The data source of such a block is a list of names,
/// separated by commas; a place without a name stays free, so that the places behind it keep their numbers.
///
/// A derived block collects the results of a set with `Take` and changes its content in `EndSet`. `Serialize` encodes
/// the content that it gets as a record, so that it needs no state of the block.
///
/// Threads: the data source changes under the assembly's lock. One thread at a time calls the operations below.
struct SourceListBlock : public ZuControl::ControlProtocol::ProtocolScanOutputRegisterBlock,
                         public ZuControl::ControlProtocol::IDescribedBlock
{
public:
    static constexpr std::size_t MOST_SOURCES = 16;

    /// One result of a source. Without value and stamp, it is missing.
    struct Reading
    {
        struct Measurement
        {
            int32 value;    ///< times 1000
            uint8 decision; ///< 1 within limits, 0 not
        };

        std::optional<Measurement> measurement; ///< a value that is valid and fits 32 bits
        std::optional<wStamp> stamp;
    };

    /// What has become of a set.
    struct Outcome
    {
        bool isChanged = false; ///< the block shows another content than before
        bool isLost = false;    ///< the results of the set had no place
    };

    /// Throws as the base does, and as `SetDataSource` does.
    SourceListBlock(ZuControl::ControlProtocol::RegisterBlockParams const& params,
                    ZuControl::ControlProtocol::ProtocolRegisterBlockInfo& usedInfo);
    ~SourceListBlock() override;

    /// Throws `Zu::Status::BAD_ARGUMENT` for a list of more than MOST_SOURCES places. The old list then stays.
    void SetDataSource(std::string const& newDataSource) override;

    /// The names of a list without the spaces around them; empty for a place that stays free.
    static std::vector<std::string_view> Split(std::string_view list);

    /// What an item says. Throws as `Serialize` of the base class does, for an item of another kind.
    Reading Read(ZuCore::ResultItem item);

    /// Forgets the content if `newSources`, the data source in a new layout, differs from the list so far. Returns how
    /// many results are lost that way.
    uint64 Follow(std::string const& newSources);

    /// Takes the result of the source at a place of the list. `place` is below MOST_SOURCES.
    virtual void Take(std::size_t place, Reading const& reading) = 0;

    /// All results of a set are taken.
    virtual Outcome EndSet() = 0;

    /// A scan begins.
    virtual void Blank() = 0;

    /// Writes the registers of the block.
    virtual void Encode(std::span<uint8> bytes) = 0;

    void SerializeMeasurementMsg(uint8* buffer, size_t offset, DefaultScanOutputInputData const* data) override;
    void SerializeStampMsg(uint8* buffer, size_t offset, DefaultScanOutputInputData const* data) override;
    void SerializeNullMsg(uint8* buffer, size_t offset) override;

protected:
    /// A field for each source of the list that has a name. `make(place)` makes the field without its source.
    template <typename Make>
    void AddFields(std::vector<ZuControl::ControlProtocol::RegisterField>& fields, Make const& make) const
    {
        auto const names = Split(dataSource.Get());
        for (std::size_t place = 0; place < names.size(); ++place)
        {
            if (!names[place].empty())
            {
                fields.push_back(make(place));
                fields.back().source = names[place];
            }
        }
    }

    /// Forgets all results. Returns how many of them had to be kept.
    virtual uint64 Clear() = 0;

    /// Throws `Zu::Status::WRONG_BUFFER_SIZE` if `record` or `bytes` have other sizes than expected.
    void CheckSizes(void const* destination, std::size_t destinationSize, void const* source, std::size_t sourceSize,
                    std::size_t recordSize) const;

private:
    std::string sources; // those of the content
    Reading latest;      // filled by the three operations for messages
};

} // namespace ModbusTcp
