#include "ZuControl/Persistence/PersistControl.h"

#include "ZuControl/Persistence/InstanceWithStore.h"

#include <stdexcept>

namespace ZuControl
{

using ZuCommon::PersistDomain;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

class PersistControlTest : public InstanceWithStore
{
};

TEST_F(PersistControlTest, KnowsItsVersion)
{
    EXPECT_EQ(std::string(control.Version()), "1");
}

TEST_F(PersistControlTest, SavesAllThatAnInstanceHasByTheKeysOfItsRecords)
{
    Build({.map = MapKind::REGISTER, .assemblies = 1});

    Save();

    EXPECT_EQ(store.files.at(PATH),
              R"({"version":"1","zu:control":{"enabled":false,"outputs":{"acceptedDataFormats":[],"attributes":)"
              R"({"count":60000,"itemSize":2,"start":100},"map":[]},"parameters":{"limits":{"high":0.5,"low":-5},)"
              R"("mask":0,"name":"default","port":1000,"secure":false},"parametersVersion":"1","registerAssemblyList":)"
              R"([{"attributes":{"isGlobalAddressSpaceUsed":true,"outputIdMax":999,"outputIdMin":0},"blocks":)"
              R"([{"displayName":"Single name","outputId":0,"scannerId":"","type":"Single"}],"properties":)"
              R"({"displayName":"Assembly r0","id":"r0"}}]}})");
    EXPECT_EQ(store.written, (std::vector<std::string>{PATH}));
    EXPECT_TRUE(log.Lines().empty());
}

struct MapCase
{
    char const* name;
    MapKind kind;
    char const* entries;
};

class PersistControlMap : public PersistControlTest, public testing::WithParamInterface<MapCase>
{
};

TEST_P(PersistControlMap, BringsBackWhatWasSaved)
{
    Build({.map = GetParam().kind, .assemblies = 2});
    StoreSettings({{"parameters", {{"name", "mine"}, {"port", 7}, {"limits", {{"low", 3}}}}},
                   {"parametersVersion", "1"},
                   {"enabled", true},
                   {"outputs", {{"map", Json::parse(GetParam().entries)}}},
                   {"registerAssemblyList",
                    {{{"properties", {{"id", "r1"}}},
                      {"blocks", {{{"type", "Scan"}, {"dataSource", "s"}, {"outputId", 9}}, {{"type", "Plain"}}}}}}}});
    Load();
    Save();
    std::string const saved = store.files.at(PATH);

    Build({.map = GetParam().kind, .assemblies = 2});
    Load();
    Save();

    EXPECT_EQ(store.files.at(PATH), saved);
    EXPECT_EQ(Settings().at("outputs").at("map"), Json::parse(GetParam().entries));
    EXPECT_EQ(Blocks(0), "0 Single");
    EXPECT_EQ(Blocks(1), "9 Scan, 10 Plain");
    EXPECT_EQ(Settings().at("parameters").at("name"), "mine");
    EXPECT_TRUE(instance->IsEnabled());
    EXPECT_TRUE(log.Lines().empty());
}

INSTANTIATE_TEST_SUITE_P(
    OfEveryKind, PersistControlMap,
    testing::Values(
        MapCase{"Register", MapKind::REGISTER,
                R"([{"dataLength":0,"dataOffset":0,"outputId":100,"outputSize":4,"source":"a"},)"
                R"({"dataLength":2,"dataOffset":1,"outputId":150,"outputSize":2,"source":"b"}])"},
        MapCase{"Standard", MapKind::STANDARD, R"([{"outputId":3,"source":"b"},{"outputId":65534,"source":"a"}])"},
        MapCase{"TextId", MapKind::TEXT_ID, R"([{"outputId":"B","source":"x"},{"outputId":"a","source":"ü"}])"}),
    [](auto const& tested) { return std::string(tested.param.name); });

} // namespace ZuControl
