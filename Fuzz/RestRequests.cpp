// Input: requests of an HTTP client to the resources.
//
// Checks: every request gets a complete answer, and a refusal names its reason. A refused change changes nothing. A
// reset restores the new job from every state that the requests lead to.
//
// An input is a list of requests of two lines each: method, target and a header If-Match, then the body.

#include "Fuzz/Support/Check.h"
#include "Fuzz/Support/FormattedLog.h"
#include "Fuzz/Support/Input.h"
#include "Fuzz/Support/ModuleUnderFuzz.h"
#include "ZuRest/Answer.h"
#include "ZuRest/Request.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>

namespace
{

using Json = nlohmann::json;
using ZuRest::Answer;
using ZuRest::Request;

constexpr std::size_t MOST_REQUESTS = 16;
constexpr std::size_t LONGEST_ANSWER = 1U << 20; // the documents have at most a few dozen entries

std::string_view TakeWord(std::string_view& line)
{
    std::string_view const word = line.substr(0, line.find(' '));
    line.remove_prefix(std::min(word.size() + 1, line.size()));
    return word;
}

Request TakeRequest(ZuFuzz::Input& input)
{
    std::string_view line = input.TakeLine();
    Request request;
    request.method = TakeWord(line);
    std::string_view const target = TakeWord(line);
    request.path = target.substr(0, target.find('?'));
    request.query = target.substr(std::min(request.path.size() + 1, target.size()));
    request.ifMatch = line;
    request.body = input.TakeLine();
    return request;
}

/// The state of the whole module as clients see it; maps and assemblies are embedded in the documents of the protocols.
std::string StateOf(ZuFuzz::ModuleUnderFuzz& module)
{
    std::string state;
    for (char const* const protocol : ZuFuzz::ModuleUnderFuzz::PROTOCOLS)
    {
        Request request;
        request.path = std::string("/controls/") + protocol;
        Answer const answer = module.processor.Process(request).answer;
        ZU_FUZZ_CHECK(answer.status == ZuRest::HttpStatus::OK);
        state += answer.body;
    }
    return state;
}

bool IsChange(Request const& request)
{
    return request.method == "PUT" || request.method == "PATCH" || request.method == "POST";
}

/// "updateId" removes the item and adds it with the new id. If the map refuses to add it, the item is lost.
bool MayLoseAnItem(Request const& request)
{
    return request.path.ends_with("/updateId");
}

void CheckAnswer(Answer const& answer)
{
    ZU_FUZZ_CHECK(answer.status >= ZuRest::HttpStatus::OK && answer.status <= ZuRest::HttpStatus::INTERNAL_ERROR);
    ZU_FUZZ_CHECK(answer.body.size() <= LONGEST_ANSWER);
    ZU_FUZZ_CHECK(answer.contentType.empty() == answer.body.empty());
    if (!answer.body.empty())
    {
        Json const document = Json::parse(answer.body);
        bool const isProblem = answer.contentType == "application/problem+json";
        ZU_FUZZ_CHECK(isProblem == (answer.status >= ZuRest::HttpStatus::BAD_REQUEST));
        ZU_FUZZ_CHECK(!isProblem || (document.at("status") == answer.status && document.at("detail") != ""));
        // An assembly that refuses all of several blocks throws status 0, which becomes this answer. No other refusal
        // may.
        ZU_FUZZ_CHECK(answer.status != ZuRest::HttpStatus::INTERNAL_ERROR || document.at("code") == 0);
    }
    auto const isAllow = [](auto const& header) { return header.first == "Allow"; };
    ZU_FUZZ_CHECK(answer.status != ZuRest::HttpStatus::METHOD_NOT_ALLOWED ||
                  std::ranges::any_of(answer.headers, isAllow));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8 const* data, std::size_t size)
{
    static ZuFuzz::FormattedLog const log;
    static ZuFuzz::ModuleUnderFuzz module;
    static std::string const newJob = StateOf(module);
    ZuFuzz::Input input(data, size);
    std::string before = newJob;
    for (std::size_t i = 0; i < MOST_REQUESTS && !input.IsEmpty(); ++i)
    {
        Request const request = TakeRequest(input);

        Answer const answer = module.processor.Process(request).answer;

        CheckAnswer(answer);
        std::string after = IsChange(request) ? StateOf(module) : before;
        ZU_FUZZ_CHECK(after == before || answer.status < ZuRest::HttpStatus::BAD_REQUEST || MayLoseAnItem(request));
        before = std::move(after);
    }
    module.Reset();
    ZU_FUZZ_CHECK(StateOf(module) == newJob);
    return 0;
}
