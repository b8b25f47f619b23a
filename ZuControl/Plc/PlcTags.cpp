#include "ZuControl/Plc/PlcTags.h"

#include "ZuApi/Exception.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Params/Group.h"
#include "ZuControl/Control/ControlInfo.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuControl/ControlProtocol/AssemblyLock.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultBlockFields.h"
#include "ZuControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/Plc/PlcNames.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace ZuControl::Plc
{

using ControlProtocol::AssemblyLock;
using ControlProtocol::BlockOrder;
using ControlProtocol::FieldArea;
using ControlProtocol::IProtocolRegisterAssembly;
using ControlProtocol::ProtocolRegisterBlock;
using ControlProtocol::ProtocolRegisterBlockInfo;
using ControlProtocol::RegisterField;

namespace
{

BlockOrder OrderOf(ProtocolRegisterBlockInfo const& type)
{
    BlockOrder const order = ControlProtocol::ProtocolOrderOf(type);
    bool const isLittleEndian = type.BytesPerRegister() == 1 && !order.isBigEndian;
    return isLittleEndian ? BlockOrder::DCBA : order;
}

RegisterField RawField(ProtocolRegisterBlock const& block)
{
    RegisterField raw;
    raw.name = "raw";
    raw.count = block.RegisterCount();
    raw.comment = "the plug-in does not describe blocks of the type " + block.Type();
    return raw;
}

bool IsWithin(ProtocolRegisterBlock const& block, RegisterField const& field)
{
    return field.area != FieldArea::REGISTERS ||
           (field.count > 0 && uint32{field.offset} + field.count <= block.RegisterCount());
}

/// The fields of a block. One of the type RAW if it does not describe any, or describes registers that it does not have.
std::vector<RegisterField> CheckedFieldsOf(ProtocolRegisterBlock const& block)
{
    std::vector<RegisterField> fields = ControlProtocol::FieldsOf(block);
    bool const isGood =
        !fields.empty() && std::ranges::all_of(fields, [&block](auto const& field) { return IsWithin(block, field); });
    if (!isGood)
    {
        fields.assign(1, RawField(block));
    }
    return fields;
}

/// The parameter "port" of the service; 0 if it has none.
uint16 PortOf(IControlInstance const& instance)
{
    nlohmann::json const params = Zu::Properties::JsonSerializer::Serialize(instance.Params());
    auto const port = params.find("port");
    return port != params.end() && port->is_number_unsigned() ? port->get<uint16>() : uint16{0};
}

/// Reads the blocks of one assembly into a list.
class Reader final
{
public:
    Reader(PlcTagList& usedList, std::string usedId) : list(usedList), id(std::move(usedId))
    {
    }

    void Read(IProtocolRegisterAssembly& assembly)
    {
        AssemblyLock const lock(assembly);
        auto const& types = assembly.SupportedRegisterBlockTypes();
        for (auto const& block : assembly.AddedRegisterBlocks())
        {
            auto const type =
                std::ranges::find_if(types, [&block](auto const& one) { return one->Type() == block->Type(); });
            if (type == types.end() || !(*type)->IsGlobalAddressSpaceUsed())
            {
                ZU_THROW(Zu::Status::NOT_SUPPORTED, "The blocks of the connection map %s have no register addresses.",
                         id.c_str());
            }
            list.bytesPerRegister = (*type)->BytesPerRegister();
            list.order = OrderOf(**type);
            Read(*block, OrderOf(**type));
        }
    }

private:
    void Read(ProtocolRegisterBlock const& block, BlockOrder order)
    {
        for (RegisterField& field : CheckedFieldsOf(block))
        {
            PlcTag& tag = list.tags.emplace_back();
            tag.address = field.area == FieldArea::REGISTERS ? block.OutputId() + uint32{field.offset} : field.offset;
            tag.source = field.source.empty() && block.HasDataSource() ? block.DataSource() : field.source;
            tag.order = field.order.value_or(order);
            tag.assembly = id;
            tag.blockType = block.Type();
            tag.scannerId = block.ScannerId();
            tag.blockAddress = block.OutputId();
            tag.field = std::move(field);
        }
    }

    PlcTagList& list;
    std::string const id;
};

} // namespace

PlcTagList ReadTags(IControlInstance& instance)
{
    PlcTagList list;
    list.service = instance.TypeName();
    list.displayName = instance.Info().DisplayName();
    if (!instance.HasRegisterAssemblyGroup())
    {
        ZU_THROW(Zu::Status::NOT_SUPPORTED, "The service %s has no registers.", list.service.c_str());
    }
    list.port = PortOf(instance);
    list.assemblies = instance.RegisterAssemblyList();
    for (std::string const& id : list.assemblies)
    {
        Reader(list, id).Read(instance.RegisterAssembly(id.c_str()));
    }
    NameTags(list.tags, list.assemblies.size() > 1);
    return list;
}

} // namespace ZuControl::Plc
