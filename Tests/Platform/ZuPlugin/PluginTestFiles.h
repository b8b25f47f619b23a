#pragma once

#include <filesystem>
#include <string>

namespace ZuPlugin
{

/// The path of the test plug-in with this name.
std::string TestPluginPath(std::string const& name);

std::string ReadFile(std::string const& path);

/// A new temporary folder. The destructor deletes it.
class TemporaryFolder final
{
public:
    TemporaryFolder();
    ~TemporaryFolder();

    TemporaryFolder(TemporaryFolder const&) = delete;
    TemporaryFolder& operator=(TemporaryFolder const&) = delete;

    std::string Path(std::string const& name) const;

    /// Writes a file and returns its path.
    std::string Write(std::string const& name, std::string const& bytes) const;

private:
    std::filesystem::path folder;
};

} // namespace ZuPlugin
