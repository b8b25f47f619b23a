#include "ZuCommon/ProblemsManager.h"

#include "ZuApi/FormatText.h"
#include "wApi/wMutex.h"

#include <chrono>
#include <cstdarg>

namespace ZuCommon
{

namespace
{

uint64 UsecSince1970()
{
    auto const now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<uint64>(std::chrono::duration_cast<std::chrono::microseconds>(now).count());
}

} // namespace

ProblemsManager::ProblemsManager() = default;

ProblemsManager::~ProblemsManager() = default;

ProblemsManager::Iterator ProblemsManager::Add(int32 severity, char const* source, char const* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    std::string text = Zu::FormatText(format, arguments);
    va_end(arguments);
    Problem problem{severity, source != nullptr ? source : "", std::move(text), UsecSince1970()};

    Zu::MutexLock const guard(lock);
    problems.emplace(++lastNumber, std::move(problem));
    return {lastNumber};
}

void ProblemsManager::Remove(Iterator problem)
{
    Zu::MutexLock const guard(lock);
    problems.erase(problem.number);
}

std::vector<ProblemsManager::Problem> ProblemsManager::List() const
{
    Zu::MutexLock const guard(lock);
    std::vector<Problem> list;
    list.reserve(problems.size());
    for (auto const& [number, problem] : problems)
    {
        list.push_back(problem);
    }
    return list;
}

uint64 ProblemsManager::Count() const
{
    Zu::MutexLock const guard(lock);
    return problems.size();
}

} // namespace ZuCommon
