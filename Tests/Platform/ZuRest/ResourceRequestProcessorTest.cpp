#include "ZuRest/ResourceRequestProcessor.h"

#include "Support/FakeResource.h"
#include "Support/Latch.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "ZuApi/Properties/Value.h"
#include "ZuApi/Structure.h"
#include "ZuRest/IContentResource.h"
#include "ZuRest/IFormattedResource.h"
#include "ZuRest/IPreviewResource.h"
#include "ZuRest/IPromptResource.h"

#include <gtest/gtest.h>

#include <map>
#include <thread>

namespace ZuRest
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

namespace
{

using Json = nlohmann::json;
using ZuTest::FakeResource;

class KeepingReceiver final : public IStreamReceiver
{
public:
    void Receive(Json const& report) override
    {
        reports.push_back(report);
    }

    std::vector<Json> reports;
};

std::string HeaderOf(Answer const& answer, std::string const& name)
{
    for (auto const& [key, value] : answer.headers)
    {
        if (key == name)
        {
            return value;
        }
    }
    return {};
}

/// A preview of a change of "/thing".
class FakePreview final : public DocumentResourceBase, public IPreviewResource
{
public:
    IDocumentResource* DocumentProvider() override
    {
        return nullptr;
    }

    Json Document(RequestInfo const& /*request*/, ResponseInfo& /*response*/) override
    {
        return {};
    }

    std::string SubjectPath(RequestInfo const& /*request*/) const override
    {
        return "/thing";
    }

    std::function<Answer()> Preview(RequestInfo const& /*request*/, Json const& body, std::string const& tag) override
    {
        return [this, body, tag] {
            if (whileAnswering)
            {
                whileAnswering();
            }
            return Answer{HttpStatus::OK, "text/plain", body.dump() + " of " + tag, {}};
        };
    }

    std::function<void()> whileAnswering;
};

} // namespace

class ResourceRequestProcessorTest : public testing::Test
{
protected:
    ~ResourceRequestProcessorTest() override
    {
        router.Deregister("/", true);
    }

    FakeResource& Place(std::string const& route)
    {
        router.Register(route, resources[route]);
        return resources[route];
    }

    Answer Send(std::string const& method, std::string const& path, std::string const& body = {})
    {
        Request request;
        request.method = method;
        request.path = path.substr(0, path.find('?'));
        request.query = path.substr(std::min(request.path.size() + 1, path.size()));
        request.body = body;
        return processor.Process(request).answer;
    }

    Json Get(std::string const& path)
    {
        Answer const answer = Send("GET", path);
        EXPECT_EQ(answer.status, 200U) << answer.body;
        EXPECT_EQ(answer.contentType, "application/hal+json");
        return Json::parse(answer.body);
    }

    void ExpectProblem(Answer const& answer, std::string const& expected)
    {
        EXPECT_EQ(answer.contentType, "application/problem+json");
        EXPECT_EQ(Json::parse(answer.body), Json::parse(expected)) << answer.body;
        EXPECT_EQ(Json::parse(answer.body).at("status"), answer.status);
    }

    std::map<std::string, FakeResource> resources;
    ResourceRouter router;
    ResourceRequestProcessor processor{router, "/relations/{rel}"};
};

TEST_F(ResourceRequestProcessorTest, ShowsADocumentWithItsOwnAddress)
{
    Place("/controls/:protocol").document = [](RequestInfo const& request, ResponseInfo&) {
        return Json{{"id", *request.FindKey("protocol")}, {"schema", request.wantsSchema}};
    };

    EXPECT_EQ(Get("/controls/a%20b?x=1"),
              Json::parse(R"({"id": "a b", "schema": false, "_links": {"self": {"href": "/controls/a%20b"}}})"));
    EXPECT_EQ(Get("/controls/x?y&schema=true&z=").at("schema"), true);
    EXPECT_EQ(Get("/controls/x?schema=false").at("schema"), false);
}

TEST_F(ResourceRequestProcessorTest, LinksAndEmbedsWhatTheResourceNames)
{
    Place("/part/:number").document = [](RequestInfo const& request, ResponseInfo& response) {
        response.Link("up", "/whole", false, nullptr);
        return Json{{"number", *request.FindKey("number")}};
    };
    Place("/whole").document = [](RequestInfo const&, ResponseInfo& response) {
        response.Embed("item", "/part/1", true, nullptr);
        response.Link("zu:command", "/whole/commands/a", true, Json{{"title", "A"}});
        response.Embed("zu:first", "/part/1", false, nullptr);
        response.Link("help", "/help", false, nullptr);
        return Json(); // a resource with links only may have a null document
    };

    EXPECT_EQ(Get("/whole"), Json::parse(R"({
        "_links": {
            "self": {"href": "/whole"},
            "zu:command": [{"href": "/whole/commands/a", "title": "A"}],
            "help": {"href": "/help"},
            "curies": [{"name": "zu", "href": "/relations/{rel}", "templated": true}]},
        "_embedded": {
            "item": [{"number": "1", "_links": {"self": {"href": "/part/1"}, "up": {"href": "/whole"}}}],
            "zu:first": {"number": "1", "_links": {"self": {"href": "/part/1"}, "up": {"href": "/whole"}}}}})"));
}

TEST_F(ResourceRequestProcessorTest, ShowsWhyAnEmbeddedResourceCannotBeRead)
{
    Place("/broken").document = [](RequestInfo const&, ResponseInfo&) -> Json {
        ZU_THROW(Zu::Status::WRONG_STATE, "Undefined protocol status:9");
    };
    Place("/foreign").document = [](RequestInfo const&, ResponseInfo&) -> Json { throw 42; };
    Place("/round").document = [](RequestInfo const&, ResponseInfo& response) {
        response.Embed("item", "/broken", true, nullptr);
        response.Embed("item", "/nowhere", true, nullptr);
        response.Embed("item", "/round", true, nullptr);
        response.Embed("item", "/foreign", true, nullptr);
        return Json{{"whole", true}};
    };

    Json const shown = Get("/round");

    Json const& items = shown.at("_embedded").at("item");
    EXPECT_EQ(items.at(0), Json::parse(R"({"_links": {"self": {"href": "/broken"}}, "problem":
        {"title": "Conflict", "status": 409, "detail": "Undefined protocol status:9", "code": -1000}})"));
    EXPECT_EQ(items.at(1).at("problem").at("status"), 404);
    EXPECT_EQ(items.at(2), Json::parse(R"({"_links": {"self": {"href": "/round"}}})"));
    EXPECT_EQ(
        items.at(3).at("problem"),
        Json::parse(R"({"title": "Internal Server Error", "status": 500, "detail": "An internal error.", "code": 0})"));
}

TEST_F(ResourceRequestProcessorTest, ComesToAnEndWhereEachEmbedsTheNext)
{
    unsigned reads = 0;
    Place("/chain/:number").document = [&reads](RequestInfo const& request, ResponseInfo& response) {
        ++reads;
        response.Embed("next", *request.FindKey("number") + "1", false, nullptr);
        response.Embed("item", request.path + "1", true, nullptr);
        return Json::object();
    };

    EXPECT_TRUE(Get("/chain/1").contains("_embedded"));

    EXPECT_EQ(reads, 16U);
}

TEST_F(ResourceRequestProcessorTest, AnswersAnUpdateWithTheDocumentAsItNowReads)
{
    Json kept{{"a", 1}};
    FakeResource& resource = Place("/thing");
    resource.document = [&kept](RequestInfo const&, ResponseInfo&) { return kept; };
    resource.update = [&kept](RequestInfo const&, Json const& body) { kept.update(body); };

    EXPECT_EQ(Json::parse(Send("PUT", "/thing", R"({"a": 2})").body).at("a"), 2);
    Answer const patched = Send("PATCH", "/thing", R"({"b": 3})");

    EXPECT_EQ(patched.status, 200U);
    EXPECT_EQ(Json::parse(patched.body), Json::parse(R"({"a": 2, "b": 3, "_links": {"self": {"href": "/thing"}}})"));
    EXPECT_EQ(Send("PUT", "/thing", "").status, 400U);
    EXPECT_EQ(Send("PUT", "/thing", "{").status, 400U);
    EXPECT_EQ(kept, Json::parse(R"({"a": 2, "b": 3})"));
}

TEST_F(ResourceRequestProcessorTest, CallsWithTheBodyAndAnswersWithTheResult)
{
    std::vector<Json> bodies;
    Place("/call/:id").invoke = [&](RequestInfo const& request, Json const& body) {
        bodies.push_back(body);
        return *request.FindKey("id") == "null" ? Json() : Json{{"done", true}};
    };

    Answer const answered = Send("POST", "/call/x", R"({"a": 1})");
    Answer const silent = Send("POST", "/call/null");

    EXPECT_EQ(answered.status, 200U);
    EXPECT_EQ(answered.body, R"({"done":true})");
    EXPECT_EQ(silent.status, 204U);
    EXPECT_EQ(silent.body, "");
    EXPECT_EQ(bodies, (std::vector<Json>{Json{{"a", 1}}, Json::object()}));
}

TEST_F(ResourceRequestProcessorTest, UpdatesAnIndependentPlaceWhileAnotherOfTheTreeIsSlow)
{
    ZuTest::Latch started;
    ZuTest::Latch finish;
    FakeResource& slow = Place("/tree/:name");
    slow.Show(Json::object());
    slow.update = [&](RequestInfo const&, Json const&) {
        started.Open();
        EXPECT_TRUE(finish.Wait());
    };
    FakeResource& quick = Place("/tree/free/:port");
    quick.Show(Json::object());
    quick.update = [](RequestInfo const&, Json const&) {};
    ResourceRequestProcessor processor(router, {}, {}, {ZuRest::Place::Of("/tree/free")});
    Request request;
    request.method = "PUT";
    request.body = "{}";
    request.path = "/tree/a";
    std::thread other([&processor, request] { EXPECT_EQ(processor.Process(request).answer.status, 200U); });
    EXPECT_TRUE(started.Wait());

    request.path = "/tree/free/0";
    EXPECT_EQ(processor.Process(request).answer.status, 200U);

    finish.Open();
    other.join();
}

TEST_F(ResourceRequestProcessorTest, AsksNoResourceToUpdateAList)
{
    unsigned updates = 0;
    FakeResource& port = Place("/devices/:device/ports/:port");
    port.Show(Json{{"a", 1}});
    port.update = [&updates](RequestInfo const&, Json const&) { ++updates; };

    EXPECT_EQ(Send("GET", "/devices/0/ports").status, 200U);
    for (char const* const method : {"PUT", "PATCH"})
    {
        Answer const refused = Send(method, "/devices/0/ports", "{}");
        EXPECT_EQ(HeaderOf(refused, "Allow"), "GET, HEAD, OPTIONS");
        ExpectProblem(refused, std::string(R"({"title": "Method Not Allowed", "status": 405, "code": -983,
            "detail": "The resource at /devices/0/ports does not know the method )") +
                                   method + R"(."})");
    }
    EXPECT_EQ(updates, 0U);
    EXPECT_EQ(Send("PUT", "/devices/0/ports/1", "{}").status, 200U);
    EXPECT_EQ(updates, 1U);
}

TEST_F(ResourceRequestProcessorTest, OpensNoStreamForAClientThatDoesNotAcceptIt)
{
    Place("/events").isStreamable = true;
    Request request;
    request.path = "/events";
    request.accept = "application/hal+json, text/html";
    for (char const* const method : {"GET", "HEAD"})
    {
        request.method = method;
        Answer const refused = processor.Process(request).answer;
        ExpectProblem(refused, R"({"title": "Not Acceptable", "status": 406, "code": -996,
            "detail": "The resource at /events is a stream of the type text/event-stream."})");
    }
}

TEST_F(ResourceRequestProcessorTest, RefusesAnUpdateThatWouldLoseSomethingForAStrictClient)
{
    FakeResource& thing = Place("/thing");
    thing.Show(Json{{"a", 1}});
    unsigned updates = 0;
    thing.update = [&updates](RequestInfo const&, Json const&) { ++updates; };
    Request request;
    request.method = "PUT";
    request.path = "/thing";
    request.body = R"({"a": 2, "b": 1})";

    EXPECT_EQ(processor.Process(request).answer.status, 200U) << "the client has no such wish";
    request.prefer = "handling=strict";
    Answer const refused = processor.Process(request).answer;
    EXPECT_EQ(HeaderOf(refused, "Preference-Applied"), "handling=strict");
    ExpectProblem(refused, R"({"title": "Unprocessable Content", "status": 422, "code": -997,
        "detail": "There is no member 'b'."})");
    EXPECT_EQ(updates, 1U);

    request.body = Send("GET", "/thing").body;
    Answer const taken = processor.Process(request).answer;
    EXPECT_EQ(taken.status, 200U) << taken.body;
    EXPECT_EQ(HeaderOf(taken, "Preference-Applied"), "handling=strict");
    EXPECT_EQ(updates, 2U);
}

TEST_F(ResourceRequestProcessorTest, TellsTheMethodsThatAResourceKnows)
{
    FakeResource& thing = Place("/thing");
    thing.Show(Json::object());
    FakeResource& changeable = Place("/changeable");
    changeable.Show(Json::object());
    changeable.update = [](RequestInfo const&, Json const&) {};
    FakeResource& command = Place("/command");
    command.Show(Json::object());
    command.invoke = [](RequestInfo const&, Json const&) -> Json { ZU_THROW(Zu::Status::NOT_UPDATABLE); };

    Answer const options = Send("OPTIONS", "/command");
    EXPECT_EQ(options.status, 204U);
    EXPECT_EQ(HeaderOf(options, "Allow"), "GET, HEAD, POST, OPTIONS");
    EXPECT_EQ(HeaderOf(Send("OPTIONS", "/changeable"), "Allow"), "GET, HEAD, PUT, PATCH, OPTIONS");
    EXPECT_EQ(HeaderOf(Send("OPTIONS", "/thing"), "Allow"), "GET, HEAD, OPTIONS");
    Answer const unknown = Send("DELETE", "/thing");
    EXPECT_EQ(HeaderOf(unknown, "Allow"), "GET, HEAD, OPTIONS");
    ExpectProblem(unknown, R"({"title": "Method Not Allowed", "status": 405, "code": -983,
        "detail": "The resource at /thing does not know the method DELETE."})");
    EXPECT_EQ(Send("POST", "/thing").status, 405U);
    Answer const fixed = Send("PUT", "/thing", "{}");
    EXPECT_EQ(HeaderOf(fixed, "Allow"), "GET, HEAD, OPTIONS");
    ExpectProblem(fixed, R"({"title": "Method Not Allowed", "status": 405, "code": -983,
        "detail": "PUT of /thing failed: its document cannot be changed."})");
    EXPECT_EQ(HeaderOf(Send("POST", "/command"), "Allow"), "GET, HEAD, POST, OPTIONS");
    EXPECT_EQ(processor.MethodsAt("/changeable"), "GET, HEAD, PUT, PATCH, OPTIONS");
    EXPECT_EQ(processor.MethodsAt("/nowhere"), "");
    EXPECT_EQ(Send("OPTIONS", "/nowhere").status, 404U);
}

TEST_F(ResourceRequestProcessorTest, LetsAResourceSpeakForItself)
{
    class Page final : public ResourceBase, public IContentResource
    {
    public:
        std::vector<std::string> ContentMethods() const override
        {
            return {"GET", "DELETE"};
        }

        Answer AnswerContent(Request const& request, RequestInfo const& info) override
        {
            if (request.method == "DELETE")
            {
                ZU_THROW(Zu::Status::WRONG_STATE, "It is in use");
            }
            return {HttpStatus::OK, "text/html", request.method + " " + *info.FindKey("name"), {{"X", "1"}}};
        }
    } page;
    router.Register("/pages/:name", page);

    Answer const got = Send("GET", "/pages/a%20b");
    EXPECT_EQ(got.contentType, "text/html");
    EXPECT_EQ(got.body, "GET a b");
    EXPECT_EQ(got.headers.size(), 1U);
    EXPECT_EQ(Send("HEAD", "/pages/x").body, "HEAD x");
    EXPECT_EQ(Send("DELETE", "/pages/x").status, 409U);
    EXPECT_EQ(HeaderOf(Send("OPTIONS", "/pages/x"), "Allow"), "GET, HEAD, DELETE, OPTIONS");
    Answer const refused = Send("PUT", "/pages/x", "{}");
    EXPECT_EQ(refused.status, 405U);
    EXPECT_EQ(HeaderOf(refused, "Allow"), "GET, HEAD, DELETE, OPTIONS");
    router.Deregister("/pages", true);
}

TEST_F(ResourceRequestProcessorTest, LetsAResourceSpeakForItselfBesideItsOtherFaces)
{
    class Thing final : public DocumentResourceBase, public IContentResource
    {
    public:
        Json Document(RequestInfo const& /*request*/, ResponseInfo& /*response*/) override
        {
            return Json::object();
        }

        std::vector<std::string> ContentMethods() const override
        {
            return {"PUT"};
        }

        Answer AnswerContent(Request const& request, RequestInfo const& /*info*/) override
        {
            return {HttpStatus::OK, "text/plain", std::to_string(request.body.size()), {}};
        }
    } both;
    router.Register("/both", both);

    EXPECT_EQ(Send("PUT", "/both", "no JSON").body, "7");
    EXPECT_EQ(Send("GET", "/both").contentType, "application/hal+json");
    EXPECT_EQ(HeaderOf(Send("OPTIONS", "/both"), "Allow"), "GET, HEAD, PUT, OPTIONS");
    router.Deregister("/both", false);
}

TEST_F(ResourceRequestProcessorTest, ShowsADocumentInTheFormatThatTheQueryNames)
{
    class Formatted final : public DocumentResourceBase, public IFormattedResource
    {
    public:
        Json Document(RequestInfo const& /*request*/, ResponseInfo& /*response*/) override
        {
            return Json::object();
        }

        Answer AnswerFormat(std::string const& format, RequestInfo const& /*info*/) override
        {
            uint32 const status = format == "none" ? HttpStatus::NOT_ACCEPTABLE : HttpStatus::OK;
            return {status, "text/plain", "as " + format, {{"Own", "header"}}};
        }
    } formatted;
    router.Register("/formatted", formatted);

    EXPECT_EQ(Send("GET", "/formatted").contentType, "application/hal+json");
    EXPECT_EQ(Send("GET", "/formatted?format").contentType, "application/hal+json");
    EXPECT_EQ(Send("GET", "/formatted?a=1&format=csv&format=b").body, "as csv");
    EXPECT_EQ(Send("GET", "/formatted?format=a%20b").body, "as a b");
    EXPECT_EQ(Send("GET", "/formatted?format=").body, "as ");
    EXPECT_EQ(Send("HEAD", "/formatted?format=csv").body, "as csv");
    EXPECT_EQ(HeaderOf(Send("GET", "/formatted?format=csv"), "Own"), "header");
    EXPECT_EQ(Send("GET", "/formatted?format=none").status, HttpStatus::NOT_ACCEPTABLE);
    EXPECT_EQ(HeaderOf(Send("GET", "/formatted?format=none"), "ETag"), "");
    EXPECT_EQ(Send("PUT", "/formatted?format=csv", "{}").status, 405U);

    std::string const tag = HeaderOf(Send("GET", "/formatted?format=csv"), "ETag");
    EXPECT_NE(tag, "");
    Request request;
    request.path = "/formatted";
    request.query = "format=csv";
    request.ifNoneMatch = tag;
    EXPECT_EQ(processor.Process(request).answer.status, HttpStatus::NOT_MODIFIED);
    request.query = "format=b";
    EXPECT_EQ(processor.Process(request).answer.status, HttpStatus::OK);
    router.Deregister("/formatted", false);
}

TEST_F(ResourceRequestProcessorTest, WritesPartsThatAreTextAsTheDocumentsThatTheyAre)
{
    class Parts final : public DocumentResourceBase
    {
    public:
        Parts()
        {
            record.Register("number", number);
            record.Register("name", name);
            number = 7;
            name = "\xC3\xA4 \"quoted\"";
        }

        Json Document(RequestInfo const& request, ResponseInfo& /*response*/) override
        {
            return {{"one", PartToJson(record, request)},
                    {"list", Json::array({PartToJson(record, request), 1})},
                    {"records", ListToJson({&record, &record}, request)},
                    {"none", ListToJson({}, request)}};
        }

    private:
        Zu::Properties::Value<uint32> number;
        Zu::Properties::Value<std::string> name;
        Zu::Properties::Structure record{true};
    } parts;
    router.Register("/parts", parts);
    Place("/around").document = [](RequestInfo const&, ResponseInfo& response) {
        response.Embed("item", "/parts", true, nullptr);
        return Json::object();
    };

    for (char const* const path : {"/parts", "/around"})
    {
        Json const fromInside = processor.Read(path, nullptr, "");
        EXPECT_EQ(Send("GET", path).body, fromInside.dump());
        EXPECT_EQ(Get(path), fromInside);
    }
    EXPECT_EQ(processor.Read("/parts", nullptr, "").at("one").at("number"), 7);
    EXPECT_EQ(Get("/parts").at("records"), Json::array({Get("/parts").at("one"), Get("/parts").at("one")}));
    EXPECT_EQ(Get("/parts").at("none"), Json::array());
    EXPECT_EQ(Json::parse(Send("GET", "/parts?schema=true").body).at("one").count("_schema"), 1U);
    EXPECT_EQ(Json::parse(Send("GET", "/parts?schema=true").body).at("records").at(1).count("_schema"), 1U);
    router.Deregister("/parts", false);
}

TEST_F(ResourceRequestProcessorTest, AnswersHeadAsGet)
{
    Place("/thing").Show(Json{{"a", 1}});

    Answer const head = Send("HEAD", "/thing");

    EXPECT_EQ(head.body, Send("GET", "/thing").body);
    EXPECT_EQ(Send("HEAD", "/nowhere").status, 404U);
}

TEST_F(ResourceRequestProcessorTest, TellsOneStateOfADocumentFromAnother)
{
    Json kept{{"a", 1}};
    FakeResource& resource = Place("/thing");
    resource.document = [&kept](RequestInfo const& request, ResponseInfo&) {
        Json shown = kept;
        if (request.wantsSchema)
        {
            shown["_schema"] = "x";
        }
        return shown;
    };
    resource.update = [&kept](RequestInfo const&, Json const& body) { kept = body; };
    Request put;
    put.method = "PUT";
    put.path = "/thing";
    put.body = R"({"a": 2})";
    Request get;
    get.path = "/thing";

    put.ifMatch = "\"stale\", \"older\"";
    EXPECT_EQ(processor.Process(put).answer.status, 412U);
    EXPECT_EQ(kept.at("a"), 1);

    std::string const schemaTag = HeaderOf(Send("GET", "/thing?schema=true"), "ETag");
    get.ifNoneMatch = HeaderOf(Send("GET", "/thing"), "ETag");
    EXPECT_NE(schemaTag, get.ifNoneMatch);
    EXPECT_EQ(processor.Process(get).answer.status, 304U);
    put.ifMatch = "\"stale\", " + schemaTag;
    Answer const changed = processor.Process(put).answer;
    EXPECT_EQ(changed.status, 200U);
    EXPECT_EQ(kept.at("a"), 2);
    EXPECT_EQ(processor.Process(get).answer.status, 200U);
    EXPECT_EQ(HeaderOf(Send("GET", "/thing"), "ETag"), HeaderOf(changed, "ETag"));
    put.ifMatch = "*";
    EXPECT_EQ(processor.Process(put).answer.status, 200U);
}

TEST_F(ResourceRequestProcessorTest, CallsOnlyWhenTheDocumentIsInTheStateThatTheClientKnows)
{
    int callCount = 0;
    FakeResource& resource = Place("/thing");
    resource.Show(Json{{"a", 1}});
    resource.invoke = [&callCount](RequestInfo const&, Json const&) { return Json(++callCount); };
    Request post;
    post.method = "POST";
    post.path = "/thing";

    post.ifMatch = "\"stale\"";
    Answer const refused = processor.Process(post).answer;
    EXPECT_EQ(refused.status, 412U);
    EXPECT_EQ(Json::parse(refused.body).at("detail"), "The document at /thing has changed.");
    EXPECT_EQ(callCount, 0);

    post.ifMatch = HeaderOf(Send("GET", "/thing"), "ETag");
    EXPECT_EQ(processor.Process(post).answer.status, 200U);
    EXPECT_EQ(callCount, 1);

    FakeResource& withoutDocument = Place("/call");
    withoutDocument.invoke = resource.invoke;
    post.path = "/call";
    EXPECT_EQ(processor.Process(post).answer.status, 412U);
    EXPECT_EQ(callCount, 1);
}

TEST_F(ResourceRequestProcessorTest, AnswersAPreviewFromTheStateOfItsSubject)
{
    Place("/thing").Show(Json{{"a", 1}});
    FakePreview preview;
    router.Register("/thing/preview", preview);
    Request post;
    post.method = "POST";
    post.path = "/thing/preview";
    post.body = "[5]";

    std::string const tag = HeaderOf(Send("GET", "/thing"), "ETag");
    EXPECT_EQ(processor.Process(post).answer.body, "[5] of " + tag);
    post.ifMatch = tag;
    EXPECT_EQ(processor.Process(post).answer.status, 200U);
    post.ifMatch = "\"stale\"";
    EXPECT_EQ(processor.Process(post).answer.status, 412U);
    EXPECT_EQ(Send("GET", "/thing/preview").status, 405U);
    EXPECT_EQ(HeaderOf(Send("OPTIONS", "/thing/preview"), "Allow"), "POST, OPTIONS");
    EXPECT_EQ(Send("POST", "/thing/preview").body, "{} of " + tag);
    router.Deregister("/thing/preview", false);
}

TEST_F(ResourceRequestProcessorTest, HoldsUpNoChangeWhileAPreviewIsAnswered)
{
    int a = 1;
    FakeResource& resource = Place("/thing");
    resource.document = [&a](RequestInfo const&, ResponseInfo&) { return Json{{"a", a}}; };
    resource.update = [&a](RequestInfo const&, Json const& body) { a = body.at("a").get<int>(); };
    FakePreview preview;
    router.Register("/thing/preview", preview);
    std::string const tag = HeaderOf(Send("GET", "/thing"), "ETag");
    preview.whileAnswering = [this] { EXPECT_EQ(Send("PUT", "/thing", R"({"a": 2})").status, 200U); };

    EXPECT_EQ(Send("POST", "/thing/preview", "1").body, "1 of " + tag);

    EXPECT_EQ(a, 2);
    router.Deregister("/thing/preview", false);
}

TEST_F(ResourceRequestProcessorTest, TurnsEachStatusIntoOneOfHttp)
{
    FakeResource& resource = Place("/thing");
    std::map<int32, uint32> const table{{-999, 404},  {-996, 404}, {-984, 400}, {-989, 400}, {-997, 422},
                                        {-992, 422},  {-987, 409}, {-980, 409}, {-977, 409}, {-998, 409},
                                        {-1000, 409}, {-982, 403}, {-976, 503}, {-993, 504}, {-1, 500}};
    for (auto const& row : table)
    {
        int32 const status = row.first;
        resource.document = [status](RequestInfo const&, ResponseInfo&) -> Json { ZU_THROW(status, "why"); };
        Answer const answer = Send("GET", "/thing");
        EXPECT_EQ(answer.status, row.second) << status;
        EXPECT_EQ(Json::parse(answer.body).at("code"), status);
        EXPECT_EQ(Json::parse(answer.body).at("detail"), "why");
        EXPECT_EQ(HeaderOf(answer, "Retry-After"), row.second == 503U ? "1" : "");
        resource.document = [status](RequestInfo const&, ResponseInfo&) -> Json { ZU_THROW(status); };
        std::string const plain = Json::parse(Send("GET", "/thing").body).at("detail").get<std::string>();
        EXPECT_TRUE(plain.starts_with("GET of /thing failed: ") && plain.ends_with('.')) << plain;
    }
}

TEST_F(ResourceRequestProcessorTest, TakesAFailureThatIsToldInWordsForARefusal)
{
    FakeResource& resource = Place("/thing");
    auto const statusOf = [&](std::function<void()> const& fail, bool isNested) {
        resource.document = [&fail, isNested](RequestInfo const&, ResponseInfo&) -> Json {
            try
            {
                fail();
            }
            catch (...)
            {
                if (isNested)
                {
                    ZU_THROW_NESTED("outer");
                }
                throw;
            }
            return {};
        };
        return Send("GET", "/thing").status;
    };
    auto const inWords = [] { ZU_THROW(Zu::Status::FAILURE, "Nothing was removed"); };
    auto const withoutWords = [] { ZU_THROW(Zu::Status::FAILURE); };
    auto const notOurs = [] { throw std::runtime_error("broken"); };
    auto const unknown = [] { throw 42; };

    EXPECT_EQ(statusOf(inWords, false), 409U);
    EXPECT_EQ(statusOf(inWords, true), 409U);
    EXPECT_EQ(statusOf(withoutWords, false), 500U);
    EXPECT_EQ(statusOf(withoutWords, true), 500U);
    EXPECT_EQ(statusOf(unknown, true), 500U);
    EXPECT_EQ(statusOf(notOurs, false), 500U);
    EXPECT_EQ(statusOf(notOurs, true), 500U);
}

TEST_F(ResourceRequestProcessorTest, TellsTheCausesFromTheOutsideIn)
{
    Place("/thing").document = [](RequestInfo const&, ResponseInfo&) -> Json {
        try
        {
            try
            {
                ZU_THROW(Zu::Status::FULL);
            }
            catch (std::exception const&)
            {
                ZU_THROW_NESTED("inner");
            }
        }
        catch (std::exception const&)
        {
            ZU_THROW_NESTED("outer");
        }
    };

    ExpectProblem(Send("GET", "/thing"),
                  R"({"title": "Conflict", "status": 409, "detail": "outer", "code": -977, "causes": ["inner"]})");
}

TEST_F(ResourceRequestProcessorTest, TakesAJsonExceptionForTheClientsFault)
{
    FakeResource& resource = Place("/thing");
    resource.Show(Json::object());
    resource.update = [](RequestInfo const&, Json const& body) {
        try
        {
            static_cast<void>(body.at("a").get<std::string>());
        }
        catch (std::exception const&)
        {
            ZU_THROW_NESTED("The thing cannot be changed");
        }
    };

    Json const problem = Json::parse(Send("PUT", "/thing", R"({"a": 1})").body);

    EXPECT_EQ(problem.at("status"), 400);
    EXPECT_EQ(problem.at("detail"), "The thing cannot be changed");
    EXPECT_NE(problem.at("causes").at(0).get<std::string>().find("type must be string, but is number"),
              std::string::npos);
}

TEST_F(ResourceRequestProcessorTest, SurvivesWhatIsNoExceptionOfOurs)
{
    ZuTest::LogRecorder log;
    FakeResource& resource = Place("/thing");

    resource.document = [](RequestInfo const&, ResponseInfo&) -> Json {
        throw std::out_of_range("invalid map<K, T> key");
    };
    ExpectProblem(Send("GET", "/thing"), R"({"title": "Internal Server Error", "status": 500,
        "detail": "invalid map<K, T> key", "code": 0})");
    resource.document = [](RequestInfo const&, ResponseInfo&) -> Json { throw 5; };
    EXPECT_EQ(Send("GET", "/thing").status, 500U);

    EXPECT_EQ(log.CountOfText("Request GET /thing failed"), 2U);
}

TEST_F(ResourceRequestProcessorTest, ReadsFromTheInsideAsAClientWould)
{
    Place("/thing").document = [](RequestInfo const& request, ResponseInfo&) {
        return Json{{"schema", request.wantsSchema}};
    };

    EXPECT_EQ(processor.Read("/thing", nullptr, ""), Get("/thing"));
    EXPECT_EQ(processor.Read("/thing", nullptr, "schema=true").at("schema"), true);
    EXPECT_EQ(RefusalOf([&] { processor.Read("/nowhere", nullptr, ""); }),
              (Refusal{-999, "There is no resource at /nowhere."}));
}

TEST_F(ResourceRequestProcessorTest, AnswersAProtocolThatReadsWhileItIsBeingStarted)
{
    std::string state = "stopped";
    FakeResource& list = Place("/controls");
    list.document = [](RequestInfo const&, ResponseInfo& response) {
        response.Embed("item", "/controls/x", true, nullptr);
        response.Embed("item", "/controls/y", true, nullptr);
        return Json::object();
    };
    FakeResource& protocol = Place("/controls/:protocol");
    protocol.document = [&](RequestInfo const& request, ResponseInfo&) {
        return *request.FindKey("protocol") == "x" ? Json{{"state", state}} : Json{{"other", true}};
    };
    Json own;
    Json all;
    protocol.update = [&](RequestInfo const&, Json const&) {
        state = "starting";
        std::thread worker([&] { // the protocol's own start waits for it
            own = processor.Read("/controls/x", nullptr, "");
            all = processor.Read("/controls", nullptr, "");
        });
        worker.join();
        state = "running";
    };

    Json const after = Json::parse(Send("PUT", "/controls/x", "{}").body);

    EXPECT_EQ(after.at("state"), "running");
    EXPECT_EQ(own.at("state"), "stopped") << "what is being changed shows as it was";
    EXPECT_EQ(all.at("_embedded").at("item").at(0).at("state"), "stopped");
    EXPECT_EQ(all.at("_embedded").at("item").at(1).at("other"), true);
}

TEST_F(ResourceRequestProcessorTest, LetsAChangeRunAloneAndOthersNotWaitForIt)
{
    FakeResource& protocol = Place("/controls/:protocol");
    protocol.Show(Json::object());
    ZuTest::Latch started;
    ZuTest::Latch finish;
    protocol.update = [&](RequestInfo const&, Json const&) {
        started.Open();
        EXPECT_TRUE(finish.Wait());
    };
    std::thread changer([&] { Send("PUT", "/controls/x", "{}"); });
    EXPECT_TRUE(started.Wait());

    bool isRead = false;
    std::function<void()> work;
    Request read;
    read.path = "/controls/x";
    processor.ProcessLater(
        read, {}, [&](std::function<void()> next) { next(); }, [&](auto) { isRead = true; });
    EXPECT_FALSE(isRead);
    EXPECT_EQ(Send("GET", "/controls/y").status, 200U);

    finish.Open();
    changer.join();
    EXPECT_TRUE(isRead);
}

TEST_F(ResourceRequestProcessorTest, LinksADocumentToItselfWhateverItsPath)
{
    Place("/things/:name").Show(Json{{"Zebra", true}, {"a", false}, {"_links", "its own"}});
    Place("/deep/:name").document = [](RequestInfo const&, ResponseInfo& response) {
        response.Link("other", "/things/a", false, nullptr);
        return Json::object();
    };

    EXPECT_EQ(Send("GET", R"(/things/a"b\c)").body,
              R"({"Zebra":true,"_links":{"self":{"href":"/things/a\"b\\c"}},"a":false})");
    EXPECT_EQ(Send("GET", "/things/\xFF").body,
              "{\"Zebra\":true,\"_links\":{\"self\":{\"href\":\"/things/\xEF\xBF\xBD\"}},\"a\":false}");
    EXPECT_EQ(Send("GET", "/deep/b").body, R"({"_links":{"other":{"href":"/things/a"},"self":{"href":"/deep/b"}}})");
    EXPECT_EQ(processor.Read("/things/x", nullptr, "").at("_links"), (Json{{"self", {{"href", "/things/x"}}}}));
}

TEST_F(ResourceRequestProcessorTest, AnswersWhatWaitsForNobodyBesideAChangeOfItsPlace)
{
    class Prompt final : public DocumentResourceBase, public IPromptResource
    {
    public:
        Json Document(RequestInfo const& /*request*/, ResponseInfo& /*response*/) override
        {
            if (isBroken)
            {
                ZU_THROW(Zu::Status::BUSY, "not now");
            }
            return {{"prompt", true}};
        }

        void UpdateDocument(RequestInfo const& /*request*/, Json const& /*document*/) override
        {
            whileChanging();
        }

        bool isBroken = false;
        std::function<void()> whileChanging;
    } prompt;
    router.Register("/prompt", prompt);
    Place("/other").Show(Json::object());
    Request read;
    read.path = "/prompt";
    prompt.whileChanging = [&] {
        auto const outcome = processor.ProcessPrompt(read);
        ASSERT_TRUE(outcome.has_value());
        EXPECT_EQ(Json::parse(outcome->answer.body).at("prompt"), true);
    };
    EXPECT_EQ(Send("PUT", "/prompt", "{}").status, 200U);

    prompt.isBroken = true;
    EXPECT_EQ(processor.ProcessPrompt(read).value().answer.status, 503U);
    read.method = "PUT";
    EXPECT_FALSE(processor.ProcessPrompt(read).has_value());
    for (char const* const path : {"/other", "/nowhere"})
    {
        read = {};
        read.path = path;
        EXPECT_FALSE(processor.ProcessPrompt(read).has_value());
    }
    router.Deregister("/prompt", false);
}

TEST_F(ResourceRequestProcessorTest, RunsAWorkAloneInATreeAndShowsThoseInsideWhatWasBefore)
{
    std::string value = "before";
    auto const show = [&](RequestInfo const&, ResponseInfo&) { return Json{{"value", value}}; };
    Place("/controls").document = show;
    Place("/controls/:protocol").document = show;
    ZuTest::Latch answered;
    std::thread client;

    processor.RunAlone({"/controls", "/controls/x"}, [&] {
        client = std::thread([&] {
            EXPECT_EQ(Get("/controls/x").at("value"), "after"); // waits for the end
            answered.Open();
        });
        value = "half way";
        EXPECT_EQ(processor.Read("/controls/x", nullptr, "").at("value"), "half way");
        std::thread([&] { EXPECT_EQ(processor.Read("/controls/x", nullptr, "").at("value"), "before"); }).join();
        value = "after";
    });

    EXPECT_TRUE(answered.Wait());
    client.join();
    EXPECT_THROW(processor.RunAlone({"/controls"}, [] { throw std::runtime_error("broken"); }), std::runtime_error);
    EXPECT_EQ(Get("/controls/x").at("value"), "after");
}

TEST_F(ResourceRequestProcessorTest, RunsAWorkAsAChangeOfOnePlace)
{
    std::string value = "before";
    Place("/controls/:protocol").document = [&](RequestInfo const&, ResponseInfo&) { return Json{{"value", value}}; };
    ZuTest::Latch answered;
    std::thread client;

    processor.RunAsChange("/controls/x", [&] {
        client = std::thread([&] {
            EXPECT_EQ(Get("/controls/x").at("value"), "after"); // waits for the end
            answered.Open();
        });
        value = "half way";
        std::thread([&] { EXPECT_EQ(processor.Read("/controls/x", nullptr, "").at("value"), "before"); }).join();
        EXPECT_EQ(Get("/controls/y").at("value"), "half way");
        value = "after";
    });

    EXPECT_TRUE(answered.Wait());
    client.join();
    EXPECT_THROW(processor.RunAsChange("/controls/x", [] { throw std::runtime_error("broken"); }), std::runtime_error);
    EXPECT_EQ(Get("/controls/x").at("value"), "after");
}

TEST_F(ResourceRequestProcessorTest, LeavesTheUpdateToItsRunnerWhileThePlaceIsLocked)
{
    FakeResource& protocol = Place("/controls/:protocol");
    protocol.Show(Json::object());
    std::vector<std::string> calls;
    protocol.update = [&](RequestInfo const& info, Json const&) {
        calls.push_back("update " + info.path);
        if (info.path == "/controls/refused")
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "no");
        }
    };
    ResourceRequestProcessor::Runner const readNow = [&calls](std::function<void()> const& read) {
        calls.emplace_back("read");
        read();
    };
    processor.SetUpdateRunner([&](std::string const& path, Json const& body, std::function<void()> const& update) {
        Request read;
        read.path = path;
        processor.ProcessLater(read, {}, readNow, [](auto) {}); // waits until the place is free
        calls.push_back("begin " + body.dump());
        update();
        calls.emplace_back("end");
    });

    EXPECT_EQ(Send("PUT", "/controls/x", R"({"a":1})").status, 200U);
    EXPECT_EQ(Send("PATCH", "/controls/refused", R"({"a":2})").status, 422U);

    EXPECT_EQ(calls, (std::vector<std::string>{R"(begin {"a":1})", "update /controls/x", "end", "read",
                                               R"(begin {"a":2})", "update /controls/refused", "read"}));
}

TEST_F(ResourceRequestProcessorTest, TellsTheObserverOfChangesAndOfNothingElse)
{
    std::vector<std::string> changes;
    processor.SetChangeObserver([&](ResourceRequestProcessor::Change const& change) {
        changes.push_back(change.request.method + " " + change.request.path + " " +
                          std::to_string(change.answer.status) + " " + change.before);
    });
    FakeResource& protocol = Place("/controls/:protocol");
    Json document{{"a", 1}};
    protocol.Show(document);
    protocol.update = [&](RequestInfo const&, Json const& body) {
        if (body.value("a", 0) == 0)
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "No");
        }
        document["a"] = body["a"];
        protocol.Show(document);
    };

    Send("GET", "/controls/x");
    Send("OPTIONS", "/controls/x");
    Send("PUT", "/controls/x", R"({"a":2})");
    Send("PATCH", "/controls/x", R"({"a":0})");
    Send("PUT", "/controls/x", "no JSON");
    Send("DELETE", "/controls/x");
    Send("POST", "/nowhere");

    ASSERT_EQ(changes.size(), 5u);
    EXPECT_TRUE(changes[0].starts_with("PUT /controls/x 200 {")) << changes[0];
    EXPECT_NE(changes[0].find(R"("a":1)"), std::string::npos) << changes[0];
    EXPECT_TRUE(changes[1].starts_with("PATCH /controls/x 4")) << changes[1];
    EXPECT_NE(changes[1].find(R"("a":2)"), std::string::npos) << changes[1];
    EXPECT_EQ(changes[2], "PUT /controls/x 400 ");
    EXPECT_EQ(changes[3], "DELETE /controls/x 405 ");
    EXPECT_EQ(changes[4], "POST /nowhere 404 ");
}

TEST_F(ResourceRequestProcessorTest, LeavesNothingLockedBehindAFailure)
{
    FakeResource& protocol = Place("/controls/:protocol");
    protocol.Show(Json::object());
    protocol.update = [](RequestInfo const&, Json const&) { ZU_THROW(Zu::Status::BUSY, "The port is taken"); };

    EXPECT_EQ(Send("PUT", "/controls/x", "{}").status, 503U);

    EXPECT_EQ(Send("GET", "/controls/x").status, 200U);
    EXPECT_EQ(Send("PUT", "/controls/x", "{}").status, 503U);
}

TEST_F(ResourceRequestProcessorTest, EndsTheScopeOfARequestBeforeItIsAnswered)
{
    FakeResource& thing = Place("/thing");
    thing.Show(Json::object());
    std::vector<std::string> events;
    ResourceRequestProcessor scoped(router, "", [&events] {
        events.emplace_back("begin");
        return std::shared_ptr<void>(
            &events, [](void* kept) { static_cast<std::vector<std::string>*>(kept)->emplace_back("end"); });
    });
    thing.update = [&events](RequestInfo const&, Json const&) {
        events.emplace_back("update");
        ZU_THROW(Zu::Status::BUSY);
    };
    Request request;
    request.method = "PUT";
    request.path = "/thing";
    request.body = "{}";

    scoped.ProcessLater(
        request, {}, [](auto work) { work(); }, [&events](auto) { events.emplace_back("answer"); });

    EXPECT_EQ(events, (std::vector<std::string>{"begin", "update", "end", "answer"}));
}

TEST_F(ResourceRequestProcessorTest, DropsARequestThatNobodyWaitsForAnyMore)
{
    FakeResource& thing = Place("/thing");
    thing.invoke = [](RequestInfo const&, Json const&) -> Json {
        ADD_FAILURE() << "was called";
        return {};
    };
    Request call;
    call.method = "POST";
    call.path = "/thing";
    call.isWanted = [] { return false; };

    EXPECT_EQ(processor.Process(call).answer.status, 503U);
}

TEST_F(ResourceRequestProcessorTest, OpensAStreamAndStopsItWithItsObject)
{
    FakeResource& thing = Place("/thing");
    thing.Show(Json{{"a", 1}});
    thing.isStreamable = true;
    std::vector<uint32> heard;
    thing.StartEvent().Add([&heard](uint32 id) { heard.push_back(id); });
    KeepingReceiver receiver;
    Request request;
    request.path = "/thing";
    request.accept = "text/event-stream";
    bool isState = false;

    auto outcome = processor.Process(request, [&](bool given) -> IStreamReceiver& {
        isState = given;
        return receiver;
    });

    EXPECT_EQ(outcome.answer.contentType, "text/event-stream");
    EXPECT_TRUE(isState);
    EXPECT_EQ(heard, std::vector<uint32>{0});
    ASSERT_EQ(thing.receivers, std::vector<IStreamReceiver*>{&receiver});
    outcome.stream.reset();
    EXPECT_EQ(thing.receivers, std::vector<IStreamReceiver*>{nullptr});
    EXPECT_EQ(Get("/thing").at("a"), 1) << "a document is there beside the stream";
}

TEST_F(ResourceRequestProcessorTest, StreamsWhatHasNoDocumentWhateverIsAskedFor)
{
    Place("/events").isStreamable = true;
    KeepingReceiver receiver;
    Request request;
    request.path = "/events";
    bool isState = true;

    auto const outcome = processor.Process(request, [&](bool given) -> IStreamReceiver& {
        isState = given;
        return receiver;
    });

    EXPECT_NE(outcome.stream, nullptr);
    EXPECT_FALSE(isState);
    request.method = "HEAD";
    EXPECT_EQ(processor.Process(request).stream, nullptr);
    EXPECT_EQ(Send("GET", "/events").status, 404U) << "nobody takes its reports";
}

} // namespace ZuRest
