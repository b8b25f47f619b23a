#include "Host/Clinic/SignedPlugins.h"

#include "ZuApi/Exception.h"

#include <array>
#include <fstream>
#include <utility>

namespace ZuHost
{

namespace
{

constexpr char const* SIGNATURE_SUFFIX = ".sig";

/// One byte more than a signature at most. Empty if there is no file.
std::string ReadSignature(std::filesystem::path const& file)
{
    std::array<char, PluginKeys::SIGNATURE_BYTES + 1> bytes{};
    std::ifstream stream(file, std::ios::binary);
    stream.read(bytes.data(), bytes.size());
    return {bytes.data(), static_cast<std::size_t>(stream.gcount())};
}

} // namespace

SignedPlugins::SignedPlugins(PluginKeys newKeys) : keys(std::move(newKeys))
{
}

SignedPlugins::~SignedPlugins() = default;

std::string SignedPlugins::Admit(std::filesystem::path const& file)
{
    std::string const head = "Plug-in " + file.string() + " was refused: ";
    std::filesystem::path signatureFile = file;
    signatureFile += SIGNATURE_SUFFIX;
    std::string const signature = ReadSignature(signatureFile);
    if (signature.empty())
    {
        return head + "it has no signature " + signatureFile.filename().string() + ", and --plugin-keys asks for one";
    }
    try
    {
        auto copy = std::make_unique<SealedFile>(file);
        std::size_t const signer =
            signature.size() == PluginKeys::SIGNATURE_BYTES ? keys.SignerOf(copy->Bytes(), signature) : 0;
        if (signer == 0)
        {
            std::string const name = signatureFile.filename().string();
            return head + "its signature " + name + " was made for another file, or by no key in " +
                   keys.File().string();
        }
        plugins.insert_or_assign(file, Plugin{std::move(copy), signer});
        return {};
    }
    catch (Zu::Exception const& exception)
    {
        return head + exception.what();
    }
}

std::filesystem::path SignedPlugins::LoadPath(std::filesystem::path const& file) const
{
    return Find(file).copy->Path();
}

std::string SignedPlugins::SignerOf(std::filesystem::path const& file) const
{
    return "signed by key " + std::to_string(Find(file).signer) + " in " + keys.File().string();
}

SignedPlugins::Plugin const& SignedPlugins::Find(std::filesystem::path const& file) const
{
    auto const found = plugins.find(file);
    if (found == plugins.end())
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "There is no admitted plug-in '%s'", file.c_str());
    }
    return found->second;
}

} // namespace ZuHost
