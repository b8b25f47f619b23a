#include "ZuControl/Plc/PlcFormats.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>

namespace ZuControl::Plc
{

using ControlProtocol::BlockOrder;
using ControlProtocol::FieldArea;
using ControlProtocol::FieldType;
using Json = nlohmann::json;

namespace
{

constexpr char const* HOSTILE = "a'\"$(touch x)`touch x`\n\xE2\x80\xA8\\\r*/\"\"\"'''; <script>";

PlcTag TagOf(FieldType type, uint16 count, BlockOrder order = BlockOrder::ABCD)
{
    PlcTag tag;
    tag.name = "a_tag";
    tag.address = 10;
    tag.order = order;
    tag.field.type = type;
    tag.field.count = count;
    return tag;
}

std::string Written(char const* format, PlcTag const& tag)
{
    PlcTagList list;
    list.service = "S";
    list.fingerprint = 4242;
    list.assemblies = {tag.assembly};
    list.tags = {tag};
    return FindPlcFormat(format)->write(list);
}

/// The arguments of mbpoll between the mode and the port.
std::string Mbpoll(PlcTag const& tag)
{
    std::string const text = Written("shell", tag);
    std::size_t const begin = text.find("-r ");
    return text.substr(begin, text.rfind(" -p ") - begin);
}

} // namespace

TEST(PlcFormats, StandInTheOrderOfTheirNames)
{
    EXPECT_TRUE(
        std::ranges::is_sorted(PlcFormats(), {}, [](PlcFormat const& format) { return std::string(format.name); }));
    EXPECT_EQ(FindPlcFormat("xml"), nullptr);
    EXPECT_EQ(FindPlcFormat(""), nullptr);
}

TEST(PlcFormats, HaveTheFingerprint)
{
    for (PlcFormat const& format : PlcFormats())
    {
        if (format.name != std::string("json-schema"))
        {
            std::string const text = Written(format.name, TagOf(FieldType::UINT, 1));
            bool const hasIt = text.find("4242") != std::string::npos || text.find("16#00001092") != std::string::npos;
            EXPECT_TRUE(hasIt) << format.name;
        }
    }
}

TEST(PlcFormats, KeepHostileTextsInLiteralsAndComments)
{
    PlcTag tag = TagOf(FieldType::UINT, 1);
    tag.source = HOSTILE;
    tag.field.unit = HOSTILE;
    tag.field.comment = HOSTILE;

    std::string const shell = Written("shell", tag);
    std::size_t lines = 0;
    for (std::size_t at = shell.find("touch"); at != std::string::npos; at = shell.find("touch", at + 1))
    {
        EXPECT_EQ(shell[shell.rfind('\n', at) + 1], '#');
        ++lines;
    }
    EXPECT_EQ(lines, 6u);

    std::string const python = Written("python", tag);
    EXPECT_NE(python.find("\"a_tag\": \"a'\\\"$(touch x)`touch x`\\U0000000a\\U00002028\\\\\\U0000000d*/"),
              std::string::npos);
    for (std::size_t at = python.find("# a'"); at != std::string::npos; at = python.find("# a'", at + 1))
    {
        EXPECT_EQ(python.substr(python.rfind('\n', at) + 1, 11), "    a_tag: ");
    }

    std::string const flow = Written("node-red", tag);
    EXPECT_TRUE(std::ranges::all_of(flow, [](char c) { return static_cast<unsigned char>(c) < 0x80; }));
    for (Json const& node : Json::parse(flow))
    {
        if (node.contains("initialize") && node.at("initialize") != "")
        {
            std::string const code = node.at("initialize");
            std::string const literal = code.substr(code.find('['), code.find(";\nconst MOST") - code.find('['));
            EXPECT_EQ(Json::parse(literal).at(0).at("source"), HOSTILE);
        }
    }

    EXPECT_EQ(Json::parse(Written("json", tag)).at("tags").at(0).at("source"), HOSTILE);
}

TEST(PlcFormats, LetMbpollShowTheNumbersThatItCanDecode)
{
    EXPECT_EQ(Mbpoll(TagOf(FieldType::UINT, 1)), "-r 10 -c 1 -t 4");
    EXPECT_EQ(Mbpoll(TagOf(FieldType::DINT, 2)), "-r 10 -c 1 -t 4:int -B");
    EXPECT_EQ(Mbpoll(TagOf(FieldType::UDINT, 2, BlockOrder::CDAB)), "-r 10 -c 1 -t 4:int");
    EXPECT_EQ(Mbpoll(TagOf(FieldType::REAL, 2)), "-r 10 -c 1 -t 4:float -B");
    EXPECT_EQ(Mbpoll(TagOf(FieldType::REAL, 2, BlockOrder::BADC)), "-r 10 -c 2 -t 4:hex");
    EXPECT_EQ(Mbpoll(TagOf(FieldType::UINT, 1, BlockOrder::DCBA)), "-r 10 -c 1 -t 4:hex");
    EXPECT_EQ(Mbpoll(TagOf(FieldType::LINT, 4)), "-r 10 -c 4 -t 4:hex");
    EXPECT_NE(Mbpoll(TagOf(FieldType::RAW, 126)).find("-r 135 -c 1 -t 4:hex"), std::string::npos);
    PlcTag coil = TagOf(FieldType::BOOL, 1);
    coil.field.area = FieldArea::COILS;
    EXPECT_EQ(Mbpoll(coil), "-r 10 -c 1 -t 0");
    coil.field.area = FieldArea::DISCRETE_INPUTS;
    EXPECT_EQ(Mbpoll(coil), "-r 10 -c 1 -t 1");
}

TEST(PlcFormats, LetNodeRedWriteTheFirstCoilThatCanBeWritten)
{
    auto const buttons = [](PlcTag const& tag) {
        std::vector<std::string> topics;
        for (Json const& node : Json::parse(Written("node-red", tag)))
        {
            if (node.at("type") == "inject" && node.at("topic") != "")
            {
                topics.push_back(node.at("topic"));
            }
        }
        return topics;
    };
    PlcTag coil = TagOf(FieldType::BOOL, 1);
    coil.field.area = FieldArea::COILS;
    EXPECT_EQ(buttons(coil), std::vector<std::string>{});
    coil.field.isWritable = true;
    EXPECT_EQ(buttons(coil), std::vector<std::string>{"a_tag"});
    coil.field.area = FieldArea::REGISTERS;
    EXPECT_EQ(buttons(coil), std::vector<std::string>{});
}

TEST(PlcFormats, TypeTheMembersOfPython)
{
    auto const type = [](PlcTag const& tag) {
        std::string const text = Written("python", tag);
        std::size_t const begin = text.find("    a_tag: ") + 11;
        return text.substr(begin, text.find('\n', begin) - begin);
    };
    PlcTag tag = TagOf(FieldType::DINT, 2);
    EXPECT_EQ(type(tag), "int");
    tag.field.divisor = 1000;
    EXPECT_EQ(type(tag), "float");
    tag.field.invalid = 5;
    EXPECT_EQ(type(tag), "Optional[float]");
    tag.field.unit = "mm";
    tag.field.comment = "width";
    EXPECT_EQ(type(tag), "Optional[float]  # mm; width");
    EXPECT_EQ(type(TagOf(FieldType::REAL, 2)), "Optional[float]");
    EXPECT_EQ(type(TagOf(FieldType::BIT, 1)), "Optional[bool]");
    EXPECT_EQ(type(TagOf(FieldType::BOOL, 1)), "bool");
    EXPECT_EQ(type(TagOf(FieldType::TEXT, 9)), "str");
    EXPECT_EQ(type(TagOf(FieldType::RAW, 9)), "List[int]");
}

TEST(PlcFormats, TakeTenThousandTagsInBoundedSpace)
{
    PlcTagList list;
    for (uint32 address = 0; address < 10'000; ++address)
    {
        PlcTag& tag = list.tags.emplace_back(TagOf(FieldType::UINT, 1));
        tag.name = "profile_zMax_decision_" + std::to_string(address);
        tag.address = address;
        tag.source = "profile/zMax";
        tag.field.comment = "1: within limits, 0: not";
    }
    for (PlcFormat const& format : PlcFormats())
    {
        EXPECT_LT(format.write(list).size(), 10'000'000u) << format.name;
    }
}

} // namespace ZuControl::Plc
