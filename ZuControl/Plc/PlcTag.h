#pragma once

#include "ZuControl/ControlProtocol/RegisterField.h"
#include "wApi/wTypes.h"

#include <string>
#include <vector>

namespace ZuControl::Plc
{

/// One value of a service, as a PLC program uses it.
struct PlcTag
{
    std::string name;   ///< legal in IEC 61131-3 and unique in its list without regard to case; see `NameTags`
    uint32 address = 0; ///< of the first register, coil or input, from 0
    std::string source; ///< the data source; empty where the block has none
    ControlProtocol::BlockOrder order = ControlProtocol::BlockOrder::ABCD; ///< the order in force
    ControlProtocol::RegisterField field; ///< type, number of registers, scale, unit, invalid value, role, comment

    // The block of the tag.
    std::string assembly;
    std::string blockType;
    std::string scannerId;
    uint16 blockAddress = 0;

    bool operator==(PlcTag const&) const = default;
};

/// All tags of a service.
struct PlcTagList
{
    std::string service; ///< the name of the service in paths, such as "ModbusTcp"
    std::string displayName;
    uint8 bytesPerRegister = 2;
    ControlProtocol::BlockOrder order = ControlProtocol::BlockOrder::ABCD; ///< of fields without one of their own
    uint16 port = 0;                                                       ///< 0: not known
    uint32 fingerprint = 0;
    uint8 fingerprintVersion = 0;
    std::vector<std::string> assemblies; ///< ids
    std::vector<PlcTag> tags;            ///< by assembly, then by block; coils and inputs come last in their block
};

} // namespace ZuControl::Plc
