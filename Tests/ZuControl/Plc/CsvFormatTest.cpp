#include "ZuControl/Plc/PlcFormats.h"

#include <gtest/gtest.h>

namespace ZuControl::Plc
{

using ControlProtocol::FieldType;

namespace
{

std::string Csv(PlcTagList const& list)
{
    return FindPlcFormat("csv")->write(list);
}

constexpr char const* HEAD =
    "name,offset,number,table,registers,bit,type,order,scale,unit,invalid,access,source,block,comment,fingerprint,"
    "area\r\n";

} // namespace

TEST(CsvFormat, HasALineForEachTag)
{
    PlcTagList list;
    list.fingerprint = 3154136885;
    PlcTag& tag = list.tags.emplace_back();
    tag.name = "profile_zMax_value";
    tag.address = 170;
    tag.source = "profile/zMax";
    tag.blockType = "Measurement";
    tag.field.type = FieldType::DINT;
    tag.field.count = 2;
    tag.field.divisor = 1000;
    tag.field.unit = "mm";
    tag.field.invalid = 0x80000000;
    tag.field.comment = "measured value";

    EXPECT_EQ(Csv(list), std::string(HEAD) +
                             "profile_zMax_value,170,171,400171,2,,DINT,ABCD,0.001,\"mm\",-2147483648,read,"
                             "\"profile/zMax\",\"Measurement\",\"measured value\",3154136885,registers\r\n");
}

TEST(CsvFormat, ShowsTheBitOfABitAndWhatCanBeWritten)
{
    PlcTagList list;
    PlcTag& tag = list.tags.emplace_back();
    tag.name = "a";
    tag.field.type = FieldType::BIT;
    tag.field.bit = 3;
    tag.field.isWritable = true;

    EXPECT_EQ(Csv(list),
              std::string(HEAD) + "a,0,1,400001,1,3,BIT,ABCD,1,\"\",,read/write,\"\",\"\",\"\",0,registers\r\n");
}

TEST(CsvFormat, CountsCoilsAndInputsInTheirTables)
{
    PlcTagList list;
    PlcTag& tag = list.tags.emplace_back();
    tag.name = "a";
    tag.address = 3200;
    tag.field.type = FieldType::BOOL;
    tag.field.area = ControlProtocol::FieldArea::DISCRETE_INPUTS;
    PlcTag coil = tag;
    coil.address = 1;
    coil.field.area = ControlProtocol::FieldArea::COILS;
    coil.field.isWritable = true;
    list.tags.push_back(coil);

    EXPECT_EQ(Csv(list), std::string(HEAD) +
                             "a,3200,3201,103201,1,,BOOL,ABCD,1,\"\",,read,\"\",\"\",\"\",0,discreteInputs\r\n"
                             "a,1,2,000002,1,,BOOL,ABCD,1,\"\",,read/write,\"\",\"\",\"\",0,coils\r\n");
}

TEST(CsvFormat, MakesNoFormulasAndNoLinesOfHostileNames)
{
    auto const source = [](std::string text) {
        PlcTagList list;
        PlcTag& tag = list.tags.emplace_back();
        tag.name = "a";
        tag.source = std::move(text);
        std::string const csv = Csv(list);
        std::size_t const begin = csv.find("read,", std::string(HEAD).size()) + 5;
        return csv.substr(begin, csv.size() - begin - std::string(",\"\",\"\",0,registers\r\n").size());
    };
    EXPECT_EQ(source("=HYPERLINK(\"http://x\")"), "\"'=HYPERLINK(\"\"http://x\"\")\"");
    EXPECT_EQ(source("+1"), "\"'+1\"");
    EXPECT_EQ(source("-1"), "\"'-1\"");
    EXPECT_EQ(source("@SUM(A1)"), "\"'@SUM(A1)\"");
    EXPECT_EQ(source("\t=1"), "\"' =1\"");
    EXPECT_EQ(source("\r\n=1"), "\"'  =1\"");
    EXPECT_EQ(source(" =1"), "\"' =1\"");
    EXPECT_EQ(source("a\r\nb,c;d\"e"), "\"a  b,c;d\"\"e\"");
}

} // namespace ZuControl::Plc
