#include "Host/Jobs/JobsResources.h"

#include "Host/Jobs/JobDesk.h"
#include "ZuRest/ResourceRequestProcessor.h"
#include "ZuRest/ResourceRouter.h"

#include <gtest/gtest.h>

namespace ZuHost
{

namespace
{

using Json = nlohmann::json;
using ZuRest::Answer;

} // namespace

class JobsResourcesTest : public testing::Test
{
protected:
    JobsResourcesTest()
    {
        desk.jobs.Begin(JobName("default"));
    }

    Answer Send(std::string const& method, std::string const& path, std::string const& body = {},
                std::string const& ifMatch = {}, std::string const& ifNoneMatch = {})
    {
        ZuRest::Request request;
        request.method = method;
        request.path = path;
        request.body = body;
        request.ifMatch = ifMatch;
        request.ifNoneMatch = ifNoneMatch;
        return processor.Process(request).answer;
    }

    void ExpectProblem(Answer const& answer, uint32 status, std::string const& detail)
    {
        EXPECT_EQ(answer.status, status);
        EXPECT_EQ(answer.contentType, "application/problem+json");
        EXPECT_EQ(Json::parse(answer.body).at("detail"), detail);
    }

    static std::string HeaderOf(Answer const& answer, std::string const& name)
    {
        for (auto const& [header, value] : answer.headers)
        {
            if (header == name)
            {
                return value;
            }
        }
        return {};
    }

    ZuTest::ScratchFolder scratch;
    ZuTest::JobDesk desk{scratch.path};
    ZuRest::ResourceRouter router;
    ZuRest::ResourceRequestProcessor processor{router};
    JobsResources resources{router, desk.jobs};
};

TEST_F(JobsResourcesTest, ListsTheJobsWithTheLoadedOneMarked)
{
    EXPECT_EQ(Send("POST", "/jobs/left%20side/save").status, 204U);
    desk.keepers.Set("One", "changed");

    Json const list = Json::parse(Send("GET", "/jobs").body);

    ASSERT_EQ(list.at("jobs").size(), 2U);
    Json const& loaded = list.at("jobs").at(0);
    EXPECT_TRUE(loaded.at("name") == "default" && loaded.at("loaded") == true && loaded.at("modified") == true);
    Json const& other = list.at("jobs").at(1);
    EXPECT_TRUE(other.at("name") == "left side" && other.at("loaded") == false && other.at("modified") == false);
    EXPECT_GT(other.at("bytes").get<uint64>(), 0U);
    EXPECT_EQ(list.at("_links").at("zu:job").at(1).at("href"), "/jobs/left%20side");
    EXPECT_EQ(list.at("_links").at("zu:jobReport").at("href"), "/jobs/default/report");
}

TEST_F(JobsResourcesTest, DownloadsAndUploadsTheFileOfAJob)
{
    Answer const file = Send("GET", "/jobs/default");
    EXPECT_EQ(file.status, 200U);
    EXPECT_EQ(file.contentType, "application/vnd.sqlite3");
    EXPECT_EQ(HeaderOf(file, "Content-Disposition"), "attachment; filename*=UTF-8''default.zpjob");
    EXPECT_EQ(file.body.rfind("SQLite format 3", 0), 0U);

    Answer const created = Send("PUT", "/jobs/T%C3%BCr", file.body);
    EXPECT_EQ(created.status, 201U);
    EXPECT_EQ(HeaderOf(created, "Location"), "/jobs/T%C3%BCr");
    EXPECT_EQ(Send("PUT", "/jobs/T%C3%BCr", file.body).status, 204U);
    EXPECT_EQ(HeaderOf(Send("HEAD", "/jobs/T%C3%BCr"), "Content-Disposition"),
              "attachment; filename*=UTF-8''T%C3%BCr.zpjob");
    EXPECT_EQ(Send("DELETE", "/jobs/T%C3%BCr").status, 204U);
    ExpectProblem(Send("GET", "/jobs/T%C3%BCr"), 404, "There is no job 'T\xC3\xBCr'");
}

TEST_F(JobsResourcesTest, HonoursTheTagOfAFile)
{
    Answer const file = Send("GET", "/jobs/default");
    std::string const tag = HeaderOf(file, "ETag");
    EXPECT_NE(tag, "");

    EXPECT_EQ(Send("GET", "/jobs/default", "", "", tag).status, 304U);
    EXPECT_EQ(Send("PUT", "/jobs/new", file.body, "*").status, 412U) << "there is nothing to replace yet";
    EXPECT_EQ(Send("PUT", "/jobs/new", file.body).status, 201U);
    EXPECT_EQ(Send("DELETE", "/jobs/new", "", "\"other\"").status, 412U);
    std::string const newTag = HeaderOf(Send("GET", "/jobs/new"), "ETag");
    EXPECT_EQ(Send("DELETE", "/jobs/new", "", newTag).status, 204U);
}

TEST_F(JobsResourcesTest, LoadsAJobAndReportsIt)
{
    ExpectProblem(Send("POST", "/jobs/none/load"), 404, "There is no job 'none'");
    ExpectProblem(Send("GET", "/jobs/none/report"), 404,
                  "There is no report: the job 'none' is not the one that was loaded last");

    Answer const loaded = Send("POST", "/jobs/default/load");

    EXPECT_EQ(loaded.status, 200U);
    Json report = Json::parse(Send("GET", "/jobs/default/report").body);
    report.erase("_links");
    EXPECT_EQ(Json::parse(loaded.body), report);
    EXPECT_EQ(report.at("protocols").at("One"),
              Json::parse(R"({"source": "job", "takenOver": ["enabled", "parameters"], "reset": [], "skipped": [],
                              "lines": []})"));
}

TEST_F(JobsResourcesTest, RefusesWhatIsNotAllowed)
{
    std::string const file = Send("GET", "/jobs/default").body;

    EXPECT_EQ(Send("DELETE", "/jobs/default").status, 409U);
    EXPECT_EQ(Send("PUT", "/jobs/default", file).status, 409U);
    EXPECT_EQ(Send("PUT", "/jobs/..%2Fup", file).status, 422U);
    EXPECT_EQ(Send("PUT", "/jobs/a%0Ab", file).status, 422U);
    EXPECT_EQ(Send("POST", "/jobs/.hidden/save").status, 422U);
    EXPECT_EQ(Send("PUT", "/jobs/new", "hello").status, 400U);
    EXPECT_EQ(Send("PATCH", "/jobs/new", file).status, 405U);
    EXPECT_EQ(Send("GET", "/jobs/default/load").status, 405U);
    EXPECT_EQ(HeaderOf(Send("POST", "/jobs/default"), "Allow"), "GET, HEAD, PUT, DELETE, OPTIONS");
    EXPECT_EQ(HeaderOf(Send("OPTIONS", "/jobs/default/load"), "Allow"), "POST, OPTIONS");
}

TEST_F(JobsResourcesTest, KeepsTheLoadedJobFromAClientThatWritesTheSuffixTwice)
{
    std::string const file = Send("GET", "/jobs/default").body;
    std::string const before = ZuTest::BytesOf(scratch / "default.zpjob");

    EXPECT_EQ(Send("DELETE", "/jobs/default.zpjob").status, 409U);
    EXPECT_EQ(Send("PUT", "/jobs/default.zpjob", file).status, 409U);
    EXPECT_EQ(Send("DELETE", "/jobs/default.zpjob.zpjob").status, 422U);
    EXPECT_EQ(Send("PUT", "/jobs/default.zpjob.zpjob", file).status, 422U);
    EXPECT_EQ(Send("POST", "/jobs/default.zpjob.zpjob.zpjob/save").status, 422U);

    EXPECT_EQ(ZuTest::BytesOf(scratch / "default.zpjob"), before);
    EXPECT_EQ(Send("GET", "/jobs/default").body, file);
}

TEST_F(JobsResourcesTest, NotifiesEachChangeOfTheList)
{
    std::vector<std::string> told;
    for (ZuRest::IResource* const resource : router.Resources())
    {
        resource->NotificationEvent().Add([&told](ZuRest::IResource&, ZuRest::EventType type, std::string const& path) {
            told.push_back(std::to_string(static_cast<uint32>(type)) + " " + path);
        });
    }

    Send("POST", "/jobs/copy/save");
    Send("POST", "/jobs/copy/load");
    Send("DELETE", "/jobs/default");
    Send("GET", "/jobs");

    EXPECT_EQ(told, (std::vector<std::string>{"2 /jobs", "2 /jobs", "2 /jobs"}));
}

} // namespace ZuHost
