#include "Host/HostProgram.h"
#include "Host/Http/TestConnection.h"
#include "Support/Latch.h"
#include "Support/ScratchFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <sstream>
#include <thread>

namespace ZuHost
{

namespace
{

using Json = nlohmann::json;
using ZuTest::TestConnection;

constexpr char const* MODBUS = "/controls/ModbusTcp";
constexpr char const* ASCII = "/controls/AsciiTcp";
constexpr char const* ASSEMBLY_COMMANDS = "/controls/ModbusTcp/registerAssemblies/registerAssembly-0/commands/";
constexpr char const* OUTPUT_COMMANDS = "/controls/AsciiTcp/outputs/commands/";
constexpr unsigned ROUNDS = 25;

/// The whole host with its protocols and many concurrent clients. Meant for a run under sanitizers.
class RestConcurrencyTest : public testing::Test
{
protected:
    /// Runs the host and `work` with its port.
    void RunWith(std::function<void(uint16)> const& work)
    {
        std::ostringstream output;
        std::ostringstream errors;
        std::vector<std::string> const words{"zucontrol-host", "--http",
                                             "127.0.0.1:0",    "--log",
                                             "error",          "--start",
                                             "--rate",         "200",
                                             "--data",         folder.path.string(),
                                             "--enable",       "ModbusTcp",
                                             "--enable",       "AsciiTcp",
                                             "--param",        "AsciiTcp.port=0",
                                             "--param",        "ModbusTcp.port=0"};
        int const status = RunHost(words, output, errors, [&] {
            std::string const text = output.str(); // "listening http 127.0.0.1:PORT"
            work(static_cast<uint16>(std::stoul(text.substr(text.find(':') + 1))));
        });
        EXPECT_EQ(status, 0) << errors.str();
    }

    /// A client on a thread of its own, which asks `request` for each round.
    void Add(std::function<void(TestConnection&, unsigned)> request)
    {
        requests.push_back(std::move(request));
    }

    void RunAll(uint16 port)
    {
        ZuTest::Latch begin;
        std::vector<std::thread> clients;
        for (auto const& request : requests)
        {
            clients.emplace_back([&begin, &request, port] {
                TestConnection client(port);
                EXPECT_TRUE(begin.Wait());
                for (unsigned round = 0; round < ROUNDS; ++round)
                {
                    request(client, round);
                }
            });
        }
        begin.Open();
        for (std::thread& client : clients)
        {
            client.join();
        }
    }

    /// Sends a change. Expects that the host executes it or refuses it with a reason, regardless of the other clients.
    static void Send(TestConnection& client, std::string const& method, std::string const& path,
                     std::string const& body)
    {
        auto const answer = client.Send(method, path, body);
        ASSERT_TRUE(answer.has_value()) << path;
        bool const isRefused = answer->status == 404 || answer->status == 409; // another client changed it first
        EXPECT_TRUE(answer->status / 100 == 2 || isRefused) << method << ' ' << path << ": " << answer->body;
    }

    static Json Read(TestConnection& client, std::string const& path)
    {
        auto const answer = client.Send("GET", path);
        EXPECT_TRUE(answer.has_value() && answer->status == 200U) << path;
        return answer.has_value() ? Json::parse(answer->body) : Json();
    }

    ZuTest::ScratchFolder folder;
    std::vector<std::function<void(TestConnection&, unsigned)>> requests;
};

} // namespace

TEST_F(RestConcurrencyTest, ReadsAndChangesOfAllKindsGoSideBySide)
{
    for (unsigned writer = 0; writer < 2; ++writer)
    {
        Add([writer](TestConnection& client, unsigned round) {
            Send(client, "PUT", MODBUS, Json{{"parameters", {{"maxClients", 4 + writer + round}}}}.dump());
        });
    }
    Add([](TestConnection& client, unsigned round) {
        Json const block{{"type", "Decision"}, {"outputId", 300 + round}, {"dataSource", "profile/zMax"}};
        Send(client, "POST", std::string(ASSEMBLY_COMMANDS) + "add", Json{{"blocks", {block}}}.dump());
        Json const id{{"outputId", 300 + round}};
        Send(client, "POST", std::string(ASSEMBLY_COMMANDS) + "remove", Json{{"outputIdList", {id}}}.dump());
    });
    Add([](TestConnection& client, unsigned round) {
        Send(client, "POST", std::string(OUTPUT_COMMANDS) + "remove", R"({"outputId": "zMax"})");
        std::string const name = round % 2 == 0 ? "zMax" : "a name that is longer than any that came before";
        Send(client, "POST", std::string(OUTPUT_COMMANDS) + "add",
             Json{{"outputId", name}, {"source", "profile/zMax"}}.dump());
        Send(client, "POST", std::string(OUTPUT_COMMANDS) + "remove", Json{{"outputId", name}}.dump());
        Send(client, "PUT", ASCII,
             Json{{"enabled", round % 4 != 0}, {"parameters", {{"address", "127.0.0.1"}}}}.dump());
    });
    Add([](TestConnection& client, unsigned round) {
        Send(client, "POST", round % 2 == 0 ? "/jobs/default/save" : "/jobs/default/load", "");
    });
    for (char const* const path :
         {"/", "/controls", MODBUS, "/controls/AsciiTcp?schema=true", "/controls/AsciiTcp/metrics"})
    {
        Add([path](TestConnection& client, unsigned) { EXPECT_TRUE(Read(client, path).is_object()); });
    }

    RunWith([this](uint16 port) {
        TestConnection events(port);
        events.Write("GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n");
        ASSERT_EQ(events.ReadAnswer()->status, 200U);

        RunAll(port);

        EXPECT_NE(events.ReadUntil(R"("path":"/controls/ModbusTcp")").find("data: {"), std::string::npos);
        TestConnection client(port); // no lock is left behind
        Send(client, "PUT", MODBUS, R"({"enabled": true, "parameters": {"maxClients": 9}})");
        EXPECT_EQ(Read(client, MODBUS).at("parameters").at("maxClients"), 9);
        Send(client, "PUT", ASCII, R"({"enabled": true})");
        EXPECT_EQ(Read(client, ASCII).at("status"), 0);
    });
}

} // namespace ZuHost
