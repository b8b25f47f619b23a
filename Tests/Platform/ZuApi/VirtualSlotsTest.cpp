#include "Support/VirtualSlot.h"
#include "ZuApi/ArrayBase.h"
#include "ZuApi/IValueIo.h"
#include "ZuApi/NodeType.h"
#include "ZuApi/Params/StructBase.h"
#include "ZuApi/Params/Value.h"
#include "ZuApi/Properties/ValueWrapper.h"
#include "ZuApi/Structure.h"

#include <gtest/gtest.h>

namespace Zu::Properties
{

using ZuTest::SLOTS_OF_DESTRUCTOR;
using ZuTest::StandInOrder;

namespace
{

template <typename Class>
testing::AssertionResult HasTheSlotsOfANode()
{
    return StandInOrder(SLOTS_OF_DESTRUCTOR, &Class::CopyValues, &Class::SetWriteOnly,
                        static_cast<void (Class::*)(INodeVisitorConst&) const>(&Class::Accept),
                        static_cast<void (Class::*)(INodeVisitor&)>(&Class::Accept));
}

constexpr uint64 BEHIND_NODE = SLOTS_OF_DESTRUCTOR + 4;

} // namespace

TEST(VirtualSlots, OfNodesKeepTheirPlaces)
{
    EXPECT_TRUE(HasTheSlotsOfANode<Node>());
    EXPECT_TRUE(HasTheSlotsOfANode<Structure>());
    EXPECT_TRUE(HasTheSlotsOfANode<Internal::ArrayBase>());
    EXPECT_TRUE(HasTheSlotsOfANode<Internal::ValueBase>());
    EXPECT_TRUE(HasTheSlotsOfANode<Internal::NodeType>());
    EXPECT_TRUE(HasTheSlotsOfANode<Params::StructBase>());
    EXPECT_TRUE(HasTheSlotsOfANode<Params::Value<uint16>>());
}

TEST(VirtualSlots, OfArraysStandBehindThoseOfNodes)
{
    using Internal::ArrayBase;

    EXPECT_TRUE(StandInOrder(BEHIND_NODE, &ArrayBase::Resize, &ArrayBase::Remove, &ArrayBase::Clear));
}

TEST(VirtualSlots, OfValidationStandsBehindThoseOfNodes)
{
    EXPECT_TRUE(StandInOrder(BEHIND_NODE, &Value<uint16>::CheckValidation));
    EXPECT_TRUE(StandInOrder(BEHIND_NODE, &Params::Value<uint16>::CheckValidation));
    EXPECT_TRUE(StandInOrder(BEHIND_NODE, &Params::Value<std::string>::CheckValidation));
}

TEST(VirtualSlots, OfTransferKeepTheirPlaces)
{
    EXPECT_TRUE(
        StandInOrder(SLOTS_OF_DESTRUCTOR, &IValueIo::ReadValue, &IValueIo::WriteValue, &IValueIo::ValidateValue));
}

TEST(VirtualSlots, OfTheTypedFaceHaveTheDestructorInTheirMiddle)
{
    using Face = Internal::ValueWrapper<uint16>;
    using Same = bool (Face::*)(Face const&) const;
    using Holds = bool (Face::*)(uint16 const&) const;

    EXPECT_TRUE(StandInOrder(0, static_cast<Face& (Face::*)(uint16 const&)>(&Face::operator=), &Face::Get,
                             static_cast<uint16 const& (Face::*)() const>(&Face::RawValue),
                             static_cast<uint16& (Face::*)()>(&Face::RawValue), &Face::operator uint16 const&));
    EXPECT_TRUE(StandInOrder(5 + SLOTS_OF_DESTRUCTOR, static_cast<Same>(&Face::operator==),
                             static_cast<Holds>(&Face::operator==), static_cast<Same>(&Face::operator!=),
                             static_cast<Holds>(&Face::operator!=), &Face::Set));
}

} // namespace Zu::Properties
