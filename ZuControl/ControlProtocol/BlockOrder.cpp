#include "ZuControl/ControlProtocol/BlockOrder.h"

#include "ZuApi/Exception.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"

namespace ZuControl::ControlProtocol
{

namespace
{

constexpr BlockOrder ORDERS[] = {BlockOrder::ABCD, BlockOrder::CDAB, BlockOrder::BADC, BlockOrder::DCBA};

} // namespace

IOrderedBlock::IOrderedBlock() noexcept = default;
IOrderedBlock::~IOrderedBlock() = default;

IOrderedBlockType::IOrderedBlockType() noexcept = default;
IOrderedBlockType::~IOrderedBlockType() = default;

bool IOrderedBlockType::AreBytesSwapped() const
{
    return false;
}

IOrderChoice::IOrderChoice() noexcept = default;
IOrderChoice::~IOrderChoice() = default;

BlockOrder ProtocolOrderOf(ProtocolRegisterBlockInfo const& type)
{
    auto const* const ordered = dynamic_cast<IOrderedBlockType const*>(&type);
    return {type.IsProtocolBigEndian(), ordered != nullptr && ordered->AreBytesSwapped()};
}

char const* NameOf(BlockOrder order)
{
    if (order.areBytesSwapped)
    {
        return order.isBigEndian ? "BADC" : "DCBA";
    }
    return order.isBigEndian ? "ABCD" : "CDAB";
}

ChosenOrder ReadChoice(IOrderChoice const* choice)
{
    if (choice == nullptr || choice->OrderName().empty())
    {
        return {};
    }
    std::string const& name = choice->OrderName();
    if (name == IOrderChoice::DEFAULT)
    {
        return {true, std::nullopt};
    }
    for (BlockOrder const order : ORDERS)
    {
        if (name == NameOf(order))
        {
            return {true, order};
        }
    }
    ZU_THROW(Zu::Status::BAD_ARGUMENT, "There is no order %1$s. The orders are ABCD, CDAB, BADC, DCBA and default.",
             name.c_str());
}

} // namespace ZuControl::ControlProtocol
