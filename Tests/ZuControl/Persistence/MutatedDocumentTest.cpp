#include "ZuControl/Persistence/InstanceWithStore.h"

#include "ZuApi/JsonSerializer.h"
#include "ZuControl/Control/IControlActionTarget.h"

#include <random>
#include <set>

namespace ZuControl
{

namespace
{

using Json = nlohmann::json;

/// Damages documents at random, in their structure and in their bytes.
class Spoiler
{
public:
    explicit Spoiler(uint32 seed) : generator(seed)
    {
    }

    std::string Spoil(Json document)
    {
        for (uint32 i = Below(6); i > 0; --i)
        {
            SpoilStructure(document);
        }
        std::string text = document.dump();
        if (Below(3) == 0)
        {
            SpoilBytes(text);
        }
        return text;
    }

private:
    uint32 Below(uint32 limit)
    {
        return static_cast<uint32>(generator() % limit);
    }

    /// A random value of the document; deeply nested values are more likely.
    Json& Pick(Json& document)
    {
        Json* picked = &document;
        while (picked->is_structured() && !picked->empty() && Below(6) != 0)
        {
            auto position = picked->begin();
            std::advance(position, Below(static_cast<uint32>(picked->size())));
            picked = &*position;
        }
        return *picked;
    }

    void SpoilStructure(Json& document)
    {
        Json& picked = Pick(document);
        switch (Below(6))
        {
        case 0: // a key or an element is missing
            if (picked.is_structured() && !picked.empty())
            {
                auto position = picked.begin();
                std::advance(position, Below(static_cast<uint32>(picked.size())));
                picked.erase(position);
                break;
            }
            [[fallthrough]];
        case 1:
            picked = Json::parse(OTHERS[Below(std::size(OTHERS))]);
            break;
        case 2: // a copy of another value, so that ids and sources occur twice
        {
            Json const other = Pick(document);
            Pick(document) = other;
            break;
        }
        case 3:
            Repeat(picked);
            break;
        case 4:
            Rename(picked);
            break;
        default:
            break;
        }
    }

    void Repeat(Json& picked)
    {
        if (!picked.is_array())
        {
            return;
        }
        Json const element = picked.empty() ? Json() : Json(picked.front());
        uint32 const count = Below(10) == 0 ? 3000 : Below(5);
        for (uint32 i = 0; i < count; ++i)
        {
            picked.push_back(element);
        }
    }

    void Rename(Json& picked)
    {
        if (picked.is_object() && !picked.empty())
        {
            Json const value = picked.begin().value();
            picked[Below(2) == 0 ? "autoShift" : "blocks"] = value;
        }
    }

    void SpoilBytes(std::string& text)
    {
        std::size_t const place = Below(static_cast<uint32>(text.size()));
        switch (Below(5))
        {
        case 0:
            text.resize(place);
            break;
        case 1:
            text[place] = static_cast<char>(Below(256));
            break;
        case 2:
            text.insert(place, "\xc3\x28");
            break;
        case 3: // a key twice
            if (std::size_t const brace = text.find('{', place); brace != std::string::npos)
            {
                text.insert(brace + 1, R"("outputId":7,"id":"r1","map":[],)");
            }
            break;
        default: // very deep
            if (std::size_t const colon = text.find(':', place); colon != std::string::npos)
            {
                bool const isArray = Below(2) == 0;
                std::string deep;
                for (int i = 0; i < 20000; ++i)
                {
                    deep += isArray ? "[" : "{\"limits\":";
                }
                deep += "0" + std::string(20000, isArray ? ']' : '}') + ",\"x\":";
                text.insert(colon + 1, deep);
            }
            break;
        }
    }

    static constexpr char const* OTHERS[] = {
        "null", "true", "0",      "-1", "65535", "65536", "18446744073709551615", "1e300",
        "0.5",  "\"\"", "\"r0\"", "[]", "{}",    "[[]]",  "{\"id\":{}}",          "\"\xc3\xa4\""};

    std::mt19937_64 generator;
};

} // namespace

class MutatedDocumentTest : public InstanceWithStore
{
protected:
    MutatedDocumentTest()
    {
        Build({.map = MapKind::REGISTER, .assemblies = 2});
    }

    /// Whether the load accepts the outer form of the document. It refuses a document of another form as a whole.
    static bool IsOfThisForm(Json const& document)
    {
        return document.is_object() && document.contains("zu:control") && document.contains("version") &&
               document.at("version") == "1";
    }

    /// The enabled state that the document leads to.
    bool ExpectedState(Json const& settings, bool before) const
    {
        if (!settings.is_object() || !settings.contains("enabled"))
        {
            return false;
        }
        Json const& enabled = settings.at("enabled");
        return enabled.is_boolean() ? enabled.get<bool>() : before; // a type error keeps the state
    }

    void ExpectSoundState()
    {
        EXPECT_EQ(hooks.calls.Count("BeginUpdate"), hooks.calls.Count("EndUpdate"));
        Json const settings = Settings();
        std::set<std::string> sources;
        for (Json const& entry : settings.at("outputs").at("map"))
        {
            EXPECT_TRUE(sources.insert(entry.at("source").get<std::string>()).second);
        }
        EXPECT_EQ(protocol->map->Count(), sources.size());
        uint32 firstFree = 0;
        for (Json const& block : settings.at("registerAssemblyList").at(0).at("blocks"))
        {
            auto const id = block.at("outputId").get<uint32>();
            EXPECT_GE(id, firstFree);
            firstFree = id + (block.at("type") == "Plain" ? 2 : block.at("type") == "Scan" ? 3 : 1);
        }
        EXPECT_LE(firstFree, 1000u);
    }

    /// A document with something in every part.
    Json Sound()
    {
        StoreSettings(Json::parse(R"({"enabled":true,"parameters":{"port":7,"limits":{"low":1}},"parametersVersion":"1",
            "outputs":{"map":[{"outputId":100,"outputSize":4,"source":"a"},{"outputId":110,"outputSize":2,"source":"b"},
                              {"outputId":120,"outputSize":6,"source":"c"}]},
            "registerAssemblyList":[
                {"properties":{"id":"r0"},"blocks":[{"type":"Plain","outputId":4},
                                                    {"type":"Scan","dataSource":"s","outputId":10},{"type":"Single"}]},
                {"properties":{"id":"r1"},"blocks":[{"type":"Plain","outputId":4},{"type":"Plain","outputId":5}]}]})"));
        Load();
        Save();
        return Json::parse(store.files.at(PATH));
    }
};

TEST_F(MutatedDocumentTest, LeavesASoundInstanceWhateverADocumentHolds)
{
    uint32 const seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    RecordProperty("seed", std::to_string(seed));
    Spoiler spoiler(seed);
    Json const sound = Sound();
    unsigned refused = 0;
    unsigned partial = 0;

    for (int i = 0; i < 1000; ++i)
    {
        std::string const text = spoiler.Spoil(sound);
        SCOPED_TRACE("document " + text.substr(0, 4000));
        bool const before = instance->IsEnabled();
        Json const settingsBefore = Settings();
        Forget();
        store.files[PATH] = text;

        bool threw = false;
        try
        {
            Load();
        }
        catch (std::exception const&)
        {
            threw = true;
        }

        Calls const made = hooks.calls.All();
        Json const document = Json::parse(text, nullptr, false);
        if (document.is_discarded() || !IsOfThisForm(document))
        {
            ++refused;
            EXPECT_TRUE(threw);
            EXPECT_EQ(made, Calls{});
            EXPECT_EQ(Settings(), settingsBefore);
        }
        else
        {
            partial += threw ? 1 : 0;
            EXPECT_EQ(instance->IsEnabled(), ExpectedState(document.at("zu:control"), before));
            ExpectSoundState();
        }
        ASSERT_FALSE(HasFailure());
    }

    EXPECT_GT(refused, 50u);
    EXPECT_GT(partial, 50u);
}

} // namespace ZuControl
