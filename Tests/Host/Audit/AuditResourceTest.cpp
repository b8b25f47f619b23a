#include "Host/Audit/AuditResource.h"

#include "Host/Audit/AuditTrail.h"
#include "Host/Store/DataFolder.h"
#include "Support/Refusal.h"
#include "Support/ScratchFolder.h"
#include "ZuRest/ResourceRequestProcessor.h"
#include "ZuRest/ResourceRouter.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sstream>

namespace ZuHost
{

namespace
{

using Json = nlohmann::json;

class AuditResourceTest : public testing::Test
{
protected:
    AuditResourceTest()
    {
        std::vector<TrailRecord> records;
        for (int i = 1; i <= 5; ++i)
        {
            TrailRecord record;
            record.timeUsec = 1'700'000'000'000'000 + i * 1'000'000;
            record.monotonicUsec = static_cast<uint64>(i);
            record.entry = {"user anna", "http 127.0.0.1", "do " + std::to_string(i), "", R"({"a":"b"})", "200"};
            records.push_back(record);
        }
        records[1].entry.who = "=cmd|\"x\"";
        TrailFile(folder.TrailFile(), {.days = 100'000}).Append(records);
    }

    ZuRest::Answer Get(std::string query, std::string accept = {})
    {
        ZuRest::Request request;
        request.path = "/audit";
        request.query = std::move(query);
        request.accept = std::move(accept);
        return processor.Process(request).answer;
    }

    std::vector<int> Ids(std::string query)
    {
        std::vector<int> ids;
        Json const document = Json::parse(Get(std::move(query)).body);
        for (Json const& entry : document["entries"])
        {
            ids.push_back(entry["id"]);
        }
        return ids;
    }

    ZuTest::ScratchFolder scratch;
    DataFolder const folder{scratch.path};
    AuditTrail trail{folder, {.days = 100'000}, nullptr};
    ZuRest::ResourceRouter router;
    ZuRest::ResourceRequestProcessor processor{router};
    AuditResource resource{router, trail};
};

using IdList = std::vector<int>;

} // namespace

TEST_F(AuditResourceTest, ShowsEntriesWithTheirHashes)
{
    ZuRest::Answer const answer = Get("limit=1");

    EXPECT_EQ(answer.status, 200u);
    EXPECT_EQ(answer.contentType, "application/hal+json");
    Json const document = Json::parse(answer.body);
    EXPECT_EQ(document["lastId"], 5);
    Json const entry = document["entries"][0];
    EXPECT_EQ(entry["id"], 1);
    EXPECT_EQ(entry["time"], "2023-11-14T22:13:21.000000Z");
    EXPECT_EQ(entry["monotonicUsec"], 1);
    EXPECT_EQ(entry["who"], "user anna");
    EXPECT_EQ(entry["from"], "http 127.0.0.1");
    EXPECT_EQ(entry["what"], "do 1");
    EXPECT_EQ(entry["before"], "");
    EXPECT_EQ(entry["after"], R"({"a":"b"})");
    EXPECT_EQ(entry["result"], "200");
    EXPECT_EQ(entry["count"], 1);
    EXPECT_EQ(entry["hash"].get<std::string>().size(), 64u);
}

TEST_F(AuditResourceTest, LinksItsPages)
{
    Json const first = Json::parse(Get("limit=2&who=user%20anna").body)["_links"];
    EXPECT_EQ(first["self"]["href"], "/audit?limit=2&who=user%20anna");
    EXPECT_EQ(first["next"]["href"], "/audit?limit=2&who=user%20anna&after=3");
    EXPECT_EQ(first["last"]["href"], "/audit?limit=2&who=user%20anna&after=3");
    EXPECT_EQ(Ids("limit=2&who=user%20anna&after=3"), (IdList{4, 5}));
    EXPECT_FALSE(Json::parse(Get("after=4").body)["_links"].contains("next"));
}

TEST_F(AuditResourceTest, Filters)
{
    EXPECT_EQ(Ids(""), (IdList{1, 2, 3, 4, 5}));
    EXPECT_EQ(Ids("who=user+anna"), (IdList{1, 3, 4, 5}));
    EXPECT_EQ(Ids("what=do%203"), (IdList{3}));
    EXPECT_EQ(Ids("from=127.0.0.1&after=4"), (IdList{5}));
    EXPECT_EQ(Ids("since=2023-11-14T22:13:24&until=2023-11-14T22:13:25"), (IdList{4}));
    EXPECT_EQ(Ids("since=2023-11-14T22:13:24Z"), (IdList{4, 5}));
    EXPECT_EQ(Ids("until=2023"), (IdList{}));
}

TEST_F(AuditResourceTest, RefusesWhatItDoesNotKnow)
{
    auto const fault = [](std::string_view query) {
        return ZuTest::RefusalOf([&] { AuditResource::FilterOf(query); }).text;
    };
    EXPECT_EQ(fault("whom=x"),
              "There is no parameter whom: the trail knows who, from, what, since, until, after and limit");
    EXPECT_EQ(fault("limit=0"), "The parameter limit is no number from 1 to 1000: 0");
    EXPECT_EQ(fault("limit=1001"), "The parameter limit is no number from 1 to 1000: 1001");
    EXPECT_EQ(fault("after=-1"), "The parameter after is no number from 0 to 9223372036854775807: -1");
    EXPECT_EQ(fault("after=1x"), "The parameter after is no number from 0 to 9223372036854775807: 1x");
    EXPECT_EQ(fault("since=yesterday"), "The parameter since is no time in UTC such as 2026-01-31T12:30:00: yesterday");
    EXPECT_EQ(fault("until=202"), "The parameter until is no time in UTC such as 2026-01-31T12:30:00: 202");
    EXPECT_EQ(fault("who=a&&who=b"), "The parameter who comes twice");
    EXPECT_EQ(Get("limit=x").status, 422u);
}

TEST_F(AuditResourceTest, GivesATableAndQuotesWhatATableProgramWouldTakeForAFormula)
{
    ZuRest::Answer const answer = Get("limit=2", "text/csv");

    EXPECT_EQ(answer.contentType, "text/csv; charset=utf-8; header=present");
    std::istringstream lines(answer.body);
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "id,time,monotonicUsec,who,from,what,before,after,result,count,hash\r");
    std::getline(lines, line);
    EXPECT_TRUE(line.starts_with(R"(1,2023-11-14T22:13:21.000000Z,1,"user anna","http 127.0.0.1","do 1","",)"
                                 R"("{""a"":""b""}","200",1,)"))
        << line;
    std::getline(lines, line);
    EXPECT_TRUE(line.starts_with(R"(2,2023-11-14T22:13:22.000000Z,2,"'=cmd|""x""",)")) << line;
    EXPECT_EQ(answer.headers.back(),
              (std::pair<std::string, std::string>{"Link", "</audit?limit=2&after=2>; rel=\"next\""}));
}

TEST_F(AuditResourceTest, GivesOneDocumentALine)
{
    ZuRest::Answer const answer = Get("", "application/x-ndjson");

    EXPECT_EQ(answer.contentType, "application/x-ndjson");
    std::istringstream lines(answer.body);
    int id = 0;
    for (std::string line; std::getline(lines, line);)
    {
        EXPECT_EQ(Json::parse(line)["id"], ++id);
    }
    EXPECT_EQ(id, 5);
    EXPECT_EQ(answer.headers.size(), 1u) << "no link behind the last page";
}

TEST_F(AuditResourceTest, ChoosesTheFormByTheHeader)
{
    EXPECT_EQ(Get("", "*/*").contentType, "application/hal+json");
    EXPECT_EQ(Get("", "application/json").contentType, "application/hal+json");
    EXPECT_EQ(Get("", "text/*").contentType, "text/csv; charset=utf-8; header=present");
    EXPECT_EQ(Get("", "text/csv, */*").contentType, "text/csv; charset=utf-8; header=present");
    EXPECT_EQ(Get("", "image/png").status, 406u);
}

} // namespace ZuHost
