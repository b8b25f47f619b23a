// Input: the bytes that a client sends on one connection.
//
// Checks: the requests do not depend on how the bytes arrive, no request follows a refusal, no body is longer than the
// limit, and the shared budget gets all its bytes back.
//
// The first byte of an input is the length of its pieces, the second says whether the service asks for a token.

#include "Fuzz/Support/Check.h"
#include "Fuzz/Support/Input.h"
#include "Host/Http/ByteBudget.h"
#include "Host/Http/RequestReader.h"
#include "Support/FakeGatekeeper.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using Result = ZuHost::RequestReader::Result;

constexpr uint64 BUDGET = 1U << 20;
ZuTest::FakeGatekeeper withToken("0123456789abcdef");
ZuTest::FakeGatekeeper withoutToken;

/// A client that sends pieces of up to `step` bytes.
class Conversation
{
public:
    Conversation(bool isOpen, ZuHost::ByteBudget& budget)
        : reader(isOpen ? withoutToken : withToken, {{}, {}, isOpen, !isOpen}, budget)
    {
    }

    std::vector<std::string> RequestsIn(std::string_view bytes, std::size_t step)
    {
        while (!bytes.empty() && goesOn)
        {
            auto const room = reader.Room();
            ZU_FUZZ_CHECK(room.size() != 0);
            std::size_t const count = std::min({bytes.size(), step, room.size()});
            std::memcpy(room.data(), bytes.data(), count);
            reader.Commit(count);
            bytes.remove_prefix(count);
            while (goesOn && Take(reader.Parse()))
            {
            }
        }
        if (goesOn && reader.TakeEnd())
        {
            CheckRefusal();
        }
        return std::move(requests);
    }

private:
    /// Returns false if the reader needs more bytes.
    bool Take(Result result)
    {
        switch (result)
        {
        case Result::NEEDS_BYTES:
            return false;
        case Result::NEEDS_CONTINUE:
            break;
        case Result::REQUEST:
            Keep(reader.TakeRequest());
            goesOn = reader.KeepsAlive();
            reader.Begin();
            break;
        case Result::REFUSAL:
        case Result::WRONG_TOKEN:
            CheckRefusal();
            goesOn = false;
            break;
        }
        return true;
    }

    void Keep(ZuRest::Request const& request)
    {
        ZU_FUZZ_CHECK(!request.method.empty());
        ZU_FUZZ_CHECK(request.body.size() <= ZuHost::HttpServer::MAX_BODY_BYTES);
        bool const isOpenToAll = request.path == "/health" || request.path == "/authority";
        ZU_FUZZ_CHECK(request.body.empty() || !isOpenToAll || request.method != "GET");
        std::string kept = request.method;
        for (std::string const& part : {request.path, request.query, request.body, request.accept, request.ifMatch,
                                        request.ifNoneMatch, request.prefer})
        {
            kept += '\0' + part;
        }
        requests.push_back(std::move(kept));
    }

    void CheckRefusal()
    {
        ZuRest::Answer const refusal = reader.TakeRefusal();
        ZU_FUZZ_CHECK(refusal.status >= ZuRest::HttpStatus::BAD_REQUEST);
        ZU_FUZZ_CHECK(refusal.status != ZuRest::HttpStatus::INTERNAL_ERROR);
        ZU_FUZZ_CHECK(!refusal.body.empty());
    }

    ZuHost::RequestReader reader;
    std::vector<std::string> requests;
    bool goesOn = true;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8 const* data, std::size_t size)
{
    ZuFuzz::Input input(data, size);
    std::size_t const step = 1U + input.TakeByte();
    bool const isOpen = input.TakeByte() % 2 == 0;
    std::string_view const bytes = input.TakeRest();
    ZuHost::ByteBudget budget(BUDGET);

    auto const atOnce = Conversation(isOpen, budget).RequestsIn(bytes, std::numeric_limits<std::size_t>::max());
    auto const inPieces = Conversation(isOpen, budget).RequestsIn(bytes, step);

    ZU_FUZZ_CHECK(atOnce == inPieces);
    ZU_FUZZ_CHECK(budget.Take(BUDGET)); // the conversations have ended
    return 0;
}
