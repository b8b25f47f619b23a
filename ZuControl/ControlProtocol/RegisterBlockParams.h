#pragma once

#include "ZuApi/Params/Array.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <functional>
#include <memory>
#include <string>

namespace ZuControl::ControlProtocol
{

/// The arguments of one block.
struct ZUCONTROL_API RegisterBlockParams : public Zu::Params::Group
{
    /// Stands for "no output id"; it is above the largest valid id.
    static constexpr uint16 NO_OUTPUT_ID = 65535;

    RegisterBlockParams();
    ~RegisterBlockParams() override;

    Zu::Params::Value<std::string> type;
    Zu::Params::Value<std::string> dataSource;
    Zu::Params::Value<std::string> scannerId;
    Zu::Params::Value<std::string> displayName;
    Zu::Params::Value<uint16> outputId;
};

/// Names one block by its output id.
struct ZUCONTROL_API RegisterBlockIdParams : public Zu::Params::Group
{
    RegisterBlockIdParams();
    ~RegisterBlockIdParams() override;

    Zu::Params::Value<uint16> outputId; ///< 65535: none is given
};

/// The blocks to add.
struct ZUCONTROL_API AddBlockParams : public Zu::Params::Group
{
    AddBlockParams();

    /// For plug-ins with further arguments of a block: `makeBlock` makes the elements.
    explicit AddBlockParams(std::function<std::unique_ptr<RegisterBlockParams>()> makeBlock);
    ~AddBlockParams() override;

    Zu::Params::Array<RegisterBlockParams> blocks;
    Zu::Params::Value<bool> autoShift; ///< blocks in the way move to higher ids
};

/// The output id from which the blocks follow each other without gaps.
struct ZUCONTROL_API CompactBlocksParams : public Zu::Params::Group
{
    CompactBlocksParams();
    ~CompactBlocksParams() override;

    Zu::Params::Value<uint16> startingOutputId; ///< 65535: from the assembly's first
};

/// The blocks to remove.
struct ZUCONTROL_API RemoveBlockParams : public Zu::Params::Group
{
    RemoveBlockParams();
    ~RemoveBlockParams() override;

    Zu::Params::Array<RegisterBlockIdParams> outputIdList;
};

/// The new values of a block; an empty text leaves the old value.
struct ZUCONTROL_API UpdateBlockNewParams : public Zu::Params::Group
{
    UpdateBlockNewParams();
    ~UpdateBlockNewParams() override;

    Zu::Params::Value<std::string> dataSource;
    Zu::Params::Value<std::string> scannerId;
    Zu::Params::Value<std::string> displayName;
    Zu::Params::Value<uint16> outputId; ///< the new id of the block; 65535: the id stays
};

/// The block to change, and its new values.
struct ZUCONTROL_API UpdateBlockParams : public Zu::Params::Group
{
    UpdateBlockParams();
    ~UpdateBlockParams() override;

    Zu::Params::Value<uint16> outputId; ///< names the block; 65535: none is given
    Zu::Params::Value<bool> autoShift;  ///< blocks in the way move to higher ids
    UpdateBlockNewParams newParams;
};

} // namespace ZuControl::ControlProtocol
