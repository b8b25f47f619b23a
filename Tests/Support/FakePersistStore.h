#pragma once

#include "ZuApi/Exception.h"
#include "ZuCommon/Persistence.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace ZuTest
{

/// A store in memory. The operations "Read", "Write" and "Exists" first run `on[operation]` if the test has set it, so
/// that a test can let them throw.
class FakePersistStore final : public ZuCommon::IPersistStore
{
public:
    std::string Read(std::string const& path) const override
    {
        Run("Read");
        auto const found = files.find(path);
        if (found == files.end())
        {
            ZU_THROW(Zu::Status::NOT_FOUND);
        }
        return found->second;
    }

    void Write(std::string const& path, void const* data, std::size_t size) override
    {
        Run("Write");
        files[path].assign(static_cast<char const*>(data), size);
        written.push_back(path);
    }

    bool Exists(std::string const& path) const override
    {
        Run("Exists");
        return files.contains(path);
    }

    std::map<std::string, std::string> files; ///< bytes by path
    std::vector<std::string> written;         ///< paths in the order of writing
    std::map<std::string, std::function<void()>> on;

private:
    void Run(char const* operation) const
    {
        if (auto const position = on.find(operation); position != on.end())
        {
            position->second();
        }
    }
};

} // namespace ZuTest
