#include "ZuRest/Problem.h"

#include "ZuApi/Exception.h"
#include "ZuRest/JsonText.h"

#include <nlohmann/json.hpp>

#include <functional>

namespace ZuRest
{

namespace
{

constexpr unsigned DEEPEST_CAUSE = 32; // ends the walk if a chain of exceptions contains itself

/// Calls `visit` with each exception nested in `exception`, outermost first; with null if it is no std::exception.
void VisitCauses(std::exception const& exception, std::function<void(std::exception const*)> const& visit,
                 unsigned depth = 0)
{
    auto const* const nesting = dynamic_cast<std::nested_exception const*>(&exception);
    if (nesting == nullptr || nesting->nested_ptr() == nullptr || depth == DEEPEST_CAUSE)
    {
        return;
    }
    try
    {
        nesting->rethrow_nested();
    }
    catch (std::exception const& cause)
    {
        visit(&cause);
        VisitCauses(cause, visit, depth + 1);
    }
    catch (...)
    {
        visit(nullptr);
    }
}

bool IsJsonException(std::exception const& exception)
{
    return dynamic_cast<nlohmann::json::exception const*>(&exception) != nullptr;
}

/// Whether the exception is a `Zu::Exception` with a text that gives the reason.
bool IsRefusal(std::exception const& exception)
{
    return dynamic_cast<Zu::Exception const*>(&exception) != nullptr && *exception.what() != '\0';
}

/// The end of the sentence for a status without a text.
char const* PhraseOf(int32 status)
{
    namespace Status = Zu::Status;
    switch (status)
    {
    case Status::NOT_FOUND:
        return "there is no such thing";
    case Status::NOT_SUPPORTED:
        return "it has no such thing";
    case Status::BAD_FORMAT:
    case Status::UNSUPPORTED_VERSION:
        return "what was sent cannot be read";
    case Status::BAD_ARGUMENT:
    case Status::WRONG_BUFFER_SIZE:
        return "a value that was given, or one that is missing, is not valid";
    case Status::ALREADY_EXISTS:
    case Status::ID_CONFLICT:
        return "it is there already";
    case Status::FULL:
        return "there is no room for more";
    case Status::NOT_OFFERED:
        return "it is not offered";
    case Status::WRONG_STATE:
        return "it is not possible in this state";
    case Status::NOT_UPDATABLE:
        return "its document cannot be changed";
    case Status::WRITE_ONLY_REFUSED:
        return "it is not permitted";
    case Status::BUSY:
        return "another operation is under way";
    case Status::TIME_OUT:
        return "it took too long";
    default:
        return "an internal error";
    }
}

} // namespace

Problem Problem::Of(std::exception const& exception, std::string const& method, std::string const& path)
{
    Problem problem;
    problem.code = Zu::Exception::StatusOf(exception);
    problem.detail = exception.what();
    bool isJson = IsJsonException(exception);
    bool isRefusal = IsRefusal(exception);
    VisitCauses(exception, [&](std::exception const* cause) {
        isJson = isJson || (cause != nullptr && IsJsonException(*cause));
        isRefusal = isRefusal && cause != nullptr && IsRefusal(*cause);
        if (std::string text = cause != nullptr ? cause->what() : ""; !text.empty())
        {
            problem.causes.push_back(std::move(text));
        }
    });
    problem.status = isJson ? HttpStatus::BAD_REQUEST : HttpStatus::Of(problem.code);
    if (!isJson && problem.code == Zu::Status::FAILURE && isRefusal)
    {
        problem.status = HttpStatus::CONFLICT; // a refusal with reasons, not an internal error
    }
    if (problem.detail.empty())
    {
        problem.detail.append(method).append(" of ").append(path).append(" failed: ").append(PhraseOf(problem.code));
        problem.detail.push_back('.');
    }
    return problem;
}

Problem Problem::OfCaught(std::string const& method, std::string const& path)
{
    try
    {
        throw;
    }
    catch (std::exception const& exception)
    {
        return Of(exception, method, path);
    }
    catch (...)
    {
        return {HttpStatus::INTERNAL_ERROR, "An internal error.", Zu::Status::FAILURE, {}};
    }
}

nlohmann::json Problem::ToJson() const
{
    nlohmann::json document{
        {"title", HttpStatus::Title(status)}, {"status", status}, {"detail", detail}, {"code", code}};
    if (!causes.empty())
    {
        document["causes"] = causes;
    }
    return document;
}

Answer Problem::ToAnswer() const
{
    Answer answer{status, "application/problem+json", JsonText::Write(ToJson()), {}};
    if (status == HttpStatus::SERVICE_UNAVAILABLE)
    {
        answer.headers.emplace_back("Retry-After", "1");
    }
    return answer;
}

} // namespace ZuRest
