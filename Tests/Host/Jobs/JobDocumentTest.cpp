#include "Host/Jobs/JobDocument.h"

#include "Support/FakeControlInstance.h"
#include "Support/FakePersistStore.h"
#include "ZuControl/Persistence/PersistControl.h"

#include <gtest/gtest.h>

#include <exception>
#include <utility>

namespace ZuHost
{

TEST(JobDocument, HasANameForEachTypeOfService)
{
    EXPECT_EQ(JobDocument::NameOf("ModbusTcp"), "controls/ModbusTcp/config.json");
    EXPECT_EQ(JobDocument::TypeNameOf("controls/ModbusTcp/config.json"), "ModbusTcp");
    EXPECT_EQ(JobDocument::TypeNameOf("notes.txt"), "notes.txt");
}

class JobDocuments : public testing::TestWithParam<std::pair<char const*, bool>>
{
};

TEST_P(JobDocuments, AreAcceptedWhereTheModuleAppliesThem)
{
    auto const& [text, isAccepted] = GetParam();
    ZuTest::CallLog calls;
    ZuTest::FakeControlInstance instance(calls, "One");
    ZuTest::FakePersistStore store;
    store.files["/controls/One/config.json"] = text;
    instance.enabled = true; // an applied document without this member disables the instance

    try
    {
        ZuControl::PersistControl().Load(instance, ZuCommon::PersistDomain::JOB, store);
    }
    catch (std::exception const&)
    {
    }

    EXPECT_EQ(calls.Count("Enable(false)") == 1, isAccepted);
    EXPECT_EQ(JobDocument::IsAccepted(std::string(text)), isAccepted);
}

INSTANTIATE_TEST_SUITE_P(Every, JobDocuments,
                         testing::Values(std::pair(R"({"version":"1","zu:control":{}})", true),
                                         std::pair(R"({"zu:control":null,"version":"1","x":2})", true),
                                         std::pair("", false), std::pair("[]", false), std::pair("null", false),
                                         std::pair("\"zu:control\"", false), std::pair("{}", false),
                                         std::pair(R"({"version":"1"})", false),
                                         std::pair(R"({"zu:control":{}})", false),
                                         std::pair(R"({"version":"2","zu:control":{}})", false),
                                         std::pair(R"({"version":1,"zu:control":{}})", false),
                                         std::pair(R"({"version":"1\u0000x","zu:control":{}})", false)));

} // namespace ZuHost
