#include "ZuRest/DocumentReader.h"

#include "ZuApi/Exception.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Properties/Value.h"
#include "ZuApi/Structure.h"
#include "ZuRest/DocumentResourceBase.h"
#include "ZuRest/RequestInfo.h"
#include "ZuRest/ResponseInfo.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <deque>
#include <memory>
#include <random>
#include <span>

namespace ZuRest
{

namespace
{

using Json = nlohmann::json;

constexpr char const* RELATIONS = "/relations/{rel}";

/// One reference of a document.
struct Relation
{
    bool isEmbedded;
    std::string key;
    std::string path;
    bool asList;
    Json extra;
};

/// Shows a record as a tree or as text, or another document that the test sets.
class Shown final : public DocumentResourceBase
{
public:
    explicit Shown(std::string ownPath) : path(std::move(ownPath))
    {
    }

    void AddMember(std::string const& key, std::string const& text)
    {
        record.Register(key, values.emplace_back(text));
    }

    Json Document(RequestInfo const& request, ResponseInfo& response) override
    {
        if (isBroken)
        {
            ZU_THROW(Zu::Status::FAILURE, "%s is broken", path.c_str());
        }
        for (Relation const& relation : relations)
        {
            relation.isEmbedded ? response.Embed(relation.key, relation.path, relation.asList, relation.extra)
                                : response.Link(relation.key, relation.path, relation.asList, relation.extra);
        }
        if (!other.is_discarded())
        {
            return other;
        }
        return isText ? PartToJson(record, request) : NodeToJson(record, request);
    }

    std::string const path;
    bool isText = false;
    bool isBroken = false;
    Json other = Json(Json::value_t::discarded); // in place of the record
    std::vector<Relation> relations;
    std::deque<Zu::Properties::Value<std::string>> values;
    Zu::Properties::Structure record{true};
};

} // namespace

class DocumentReaderTest : public testing::Test
{
protected:
    ~DocumentReaderTest() override
    {
        router.Deregister("/", true);
    }

    Shown& Place(std::string const& path)
    {
        Shown& made = resources.emplace_back(path);
        router.Register(path, made);
        return made;
    }

    std::deque<Shown> resources;
    ResourceRouter router;
    ResourceLocks locks;
    DocumentReader reader{router, locks, RELATIONS};
};

TEST_F(DocumentReaderTest, PutsWhatItAddsBetweenTheMembersInTheirOrder)
{
    Shown& shown = Place("/a");
    for (char const* const key : {"Upper", "_early", "_mid", "lower"})
    {
        shown.AddMember(key, key);
    }
    shown.relations.push_back({true, "item", "/nowhere", false, nullptr});

    for (bool const isText : {false, true})
    {
        shown.isText = isText;
        std::string const text = reader.Read("/a", false);
        EXPECT_EQ(text, Json::parse(text).dump()); // it sorts them
        EXPECT_LT(text.find("\"_early\""), text.find("\"_embedded\""));
        EXPECT_LT(text.find("\"_links\""), text.find("\"_mid\""));
        EXPECT_EQ(Json::parse(text).size(), 6U);
    }
}

TEST_F(DocumentReaderTest, TakesThePlaceOfMembersThatAreCalledAsWhatItAdds)
{
    Shown& shown = Place("/a");
    shown.AddMember("_links", "own");
    shown.AddMember("_embedded", "own");
    for (bool const isText : {false, true})
    {
        shown.isText = isText;
        EXPECT_EQ(reader.Read("/a", false), R"({"_embedded":"own","_links":{"self":{"href":"/a"}}})");
    }
    shown.relations.push_back({true, "item", "/a", true, nullptr});

    EXPECT_EQ(reader.Read("/a", false),
              R"({"_embedded":{"item":[{"_links":{"self":{"href":"/a"}}}]},"_links":{"self":{"href":"/a"}}})");
}

TEST_F(DocumentReaderTest, ShowsWhatIsNoObjectAsItIs)
{
    Shown& shown = Place("/a");
    shown.relations.push_back({false, "item", "/b", false, nullptr});
    for (Json const& other : {Json::array({1, "x"}), Json(7), Json("text"), Json(false)})
    {
        shown.other = other;
        EXPECT_EQ(reader.Read("/a", false), other.dump());
        EXPECT_EQ(reader.ReadFromInside("/a", false), other);
    }
    shown.other = nullptr;
    EXPECT_EQ(reader.Read("/a", false), R"({"_links":{"item":{"href":"/b"},"self":{"href":"/a"}}})");
}

TEST_F(DocumentReaderTest, KeepsTheBytesOfStringsForThoseInside)
{
    Place("/a").AddMember("name", "\xFF");
    resources.front().isText = true;

    EXPECT_EQ(Json::parse(reader.Read("/a", false)).at("name"), "\xEF\xBF\xBD");
    EXPECT_EQ(reader.ReadFromInside("/a", false).at("name"), "\xFF");
    EXPECT_EQ(reader.ReadTree("/a").at("name"), "\xFF");
}

TEST_F(DocumentReaderTest, ShowsAnEmptyRecordWithItsAddress)
{
    Shown& shown = Place("/a");
    for (bool const isText : {false, true})
    {
        shown.isText = isText;
        EXPECT_EQ(reader.Read("/a", false), R"({"_links":{"self":{"href":"/a"}}})");
    }
}

TEST_F(DocumentReaderTest, ShowsWhatWasBeforeAChangeWithTheAddressThatTheOuterOneGives)
{
    Place("/x/a").AddMember("name", "before");
    std::shared_ptr<ResourceLocks::Pass> pass;
    locks.Enter(Place::Of("/x/a"), ResourceLocks::Mode::CHANGE, [&pass](auto admitted) { pass = std::move(admitted); });
    ASSERT_NE(pass, nullptr);
    pass->ShowBefore(std::make_shared<Json const>(reader.ReadTree("/x/a")));
    resources.front().values.front() = std::string("after");
    Shown& outer = Place("/y");
    outer.relations.push_back({true, "plain", "/x/a", false, nullptr});
    outer.relations.push_back({true, "titled", "/x/a", false, Json{{"title", "A"}}});

    Json const shown = Json::parse(reader.Read("/y", false)).at("_embedded");

    EXPECT_EQ(shown.at("plain"), Json::parse(R"({"_links": {"self": {"href": "/x/a"}}, "name": "before"})"));
    EXPECT_EQ(shown.at("titled"),
              Json::parse(R"({"_links": {"self": {"href": "/x/a", "title": "A"}}, "name": "before"})"));
    EXPECT_EQ(reader.ReadFromInside("/x/a", false), shown.at("plain"));
}

namespace
{

/// The reference model: builds a document as a JSON tree by the rules of HAL.
class Model final
{
public:
    explicit Model(std::deque<Shown>& usedResources) : resources(usedResources)
    {
    }

    Json Show(std::string const& path, Json const& extra)
    {
        Shown& shown = *std::ranges::find(resources, path, &Shown::path);
        Json document =
            shown.other.is_discarded() ? Zu::Properties::JsonSerializer::Serialize(shown.record) : shown.other;
        if (document.is_null())
        {
            document = Json::object();
        }
        if (!document.is_object())
        {
            return document;
        }
        around.push_back(path);
        Json links;
        Json embedded;
        Put(links, {false, "self", path, false, extra}, LinkTo(path, extra));
        bool isNamed = false;
        for (Relation const& relation : shown.relations)
        {
            isNamed = isNamed || relation.key.starts_with("zu:");
            relation.isEmbedded ? Put(embedded, relation, ShowEmbedded(relation))
                                : Put(links, relation, LinkTo(relation.path, relation.extra));
        }
        if (isNamed)
        {
            links["curies"] = Json::array({{{"name", "zu"}, {"href", RELATIONS}, {"templated", true}}});
        }
        document["_links"] = links;
        if (!embedded.is_null())
        {
            document["_embedded"] = embedded;
        }
        around.pop_back();
        return document;
    }

private:
    static Json LinkTo(std::string const& path, Json const& extra)
    {
        Json link = extra.is_object() ? extra : Json::object();
        link["href"] = path;
        return link;
    }

    static void Put(Json& relations, Relation const& relation, Json const& shown)
    {
        Json& present = relations[relation.key];
        if (present.is_null())
        {
            present = relation.asList ? Json::array({shown}) : shown;
            return;
        }
        if (!present.is_array())
        {
            present = Json::array({present});
        }
        present.push_back(shown);
    }

    Json ShowEmbedded(Relation const& relation)
    {
        Shown const& shown = *std::ranges::find(resources, relation.path, &Shown::path);
        Json const address{{"_links", {{"self", LinkTo(relation.path, relation.extra)}}}};
        if (std::ranges::find(around, relation.path) != around.end())
        {
            return address;
        }
        if (shown.isBroken)
        {
            Json problem = address;
            problem["problem"] = {{"title", "Conflict"}, {"status", 409}};
            return problem;
        }
        return Show(relation.path, relation.extra);
    }

    std::deque<Shown>& resources;
    std::vector<std::string> around;
};

/// Reduces each problem to its title and status, because the model knows no more of it.
Json WithoutDetails(Json document)
{
    if (document.is_object() && document.contains("problem"))
    {
        document["problem"] = {{"title", document["problem"]["title"]}, {"status", document["problem"]["status"]}};
    }
    for (Json& child : document)
    {
        if (child.is_structured())
        {
            child = WithoutDetails(child);
        }
    }
    return document;
}

/// Draws the content and the references of resources at random.
class Dice final
{
public:
    void Fill(Shown& shown, std::span<char const* const> paths)
    {
        static constexpr std::array<char const*, 9> KEYS = {"id",      "Upper", "_aa",         "_embedded", "_links",
                                                            "_links2", "zeta",  "a \"quote\"", "\xC3\xA4"};
        static constexpr std::array<char const*, 6> RELATIONS_OF = {"item", "zu:command", "Up",
                                                                    "next", "zu:a",       "self2"};
        shown.isText = Below(2) == 0;
        shown.isBroken = Below(8) == 0;
        shown.other = Below(8) == 0 ? Json() : Json(Json::value_t::discarded);
        for (std::size_t i = Below(5); i > 0; --i)
        {
            shown.AddMember(KEYS[Below(KEYS.size())], std::string(Below(12), static_cast<char>('!' + Below(80))));
        }
        for (std::size_t i = Below(6); i > 0; --i)
        {
            Json const extra = Below(3) == 0 ? Json{{"title", "T"}, {"a", Below(9)}} : Json();
            shown.relations.push_back({Below(2) == 0, RELATIONS_OF[Below(RELATIONS_OF.size())],
                                       paths[Below(paths.size())], Below(2) == 0, extra});
        }
    }

private:
    std::size_t Below(std::size_t bound)
    {
        return generator() % bound;
    }

    std::mt19937_64 generator{20261122};
};

} // namespace

TEST_F(DocumentReaderTest, RandomTestAgainstATree)
{
    constexpr std::array<char const*, 5> PATHS = {"/a", "/a/b", "/a/b/c", "/d", "/d/e"};
    Dice dice;
    for (unsigned round = 0; round < 3'000; ++round)
    {
        for (char const* const path : PATHS)
        {
            dice.Fill(Place(path), PATHS);
        }
        resources.front().isBroken = false;

        std::string const text = reader.Read(PATHS.front(), false);
        Json const read = Json::parse(text);
        ASSERT_EQ(WithoutDetails(read), Model(resources).Show(PATHS.front(), nullptr)) << "round " << round;
        ASSERT_EQ(text, read.dump()) << "round " << round;
        ASSERT_EQ(reader.ReadFromInside(PATHS.front(), false), read) << "round " << round;

        for (char const* const path : PATHS)
        {
            router.Deregister(path, false);
        }
        resources.clear();
    }
}

} // namespace ZuRest
