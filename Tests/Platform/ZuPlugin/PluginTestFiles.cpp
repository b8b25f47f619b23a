#include "Platform/ZuPlugin/PluginTestFiles.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace ZuPlugin
{

std::string TestPluginPath(std::string const& name)
{
    return std::filesystem::read_symlink("/proc/self/exe").parent_path() / "TestPlugins" / (name + ".so");
}

std::string ReadFile(std::string const& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TemporaryFolder::TemporaryFolder()
{
    std::string name = (std::filesystem::temp_directory_path() / "zu-plugins-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr)
    {
        throw std::runtime_error("no temporary folder");
    }
    folder = name;
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

std::string TemporaryFolder::Path(std::string const& name) const
{
    return folder / name;
}

std::string TemporaryFolder::Write(std::string const& name, std::string const& bytes) const
{
    std::string const path = Path(name);
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
}

} // namespace ZuPlugin
