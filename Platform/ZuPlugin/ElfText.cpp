#include "ZuPlugin/ElfText.h"

#include "ZuApi/Exception.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <filesystem>

namespace ZuPlugin
{

namespace
{

#if defined(__x86_64__)
constexpr Elf64_Half MACHINE = EM_X86_64;
#elif defined(__aarch64__)
constexpr Elf64_Half MACHINE = EM_AARCH64;
#else
#error "A machine that the reader of plug-ins does not know"
#endif

constexpr unsigned char BYTE_ORDER_HERE = std::endian::native == std::endian::little ? ELFDATA2LSB : ELFDATA2MSB;

} // namespace

ElfText::ElfText(std::string const& path)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "there is no such file");
    }
    file.open(path, std::ios::binary | std::ios::ate);
    if (!file)
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "it cannot be read");
    }
    fileSize = static_cast<uint64>(file.tellg());
    ReadHeader();
    ReadSegments();
    ReadSymbols();
}

ElfText::~ElfText() = default;

bool ElfText::HasFunction(std::string_view name) const
{
    return FindDefined(name, STT_FUNC) != nullptr;
}

std::string ElfText::Text(std::string_view name)
{
    Elf64_Sym const* const symbol = FindDefined(name, STT_OBJECT);
    if (symbol == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "it offers no text %.*s", static_cast<int>(name.size()), name.data());
    }
    for (Elf64_Phdr const& segment : segments)
    {
        uint64 const distance = symbol->st_value - segment.p_vaddr;
        if (symbol->st_value >= segment.p_vaddr && distance < segment.p_filesz)
        {
            uint64 const size = std::min({uint64{symbol->st_size}, segment.p_filesz - distance, MAX_TEXT_BYTES});
            std::vector<char> const bytes = ReadRecords<char>(segment.p_offset + distance, size);
            return {bytes.begin(), std::find(bytes.begin(), bytes.end(), '\0')};
        }
    }
    ZU_THROW(Zu::Status::BAD_FORMAT, "it is damaged: a symbol lies outside of all segments");
}

void ElfText::ReadHeader()
{
    if (fileSize < SELFMAG || std::memcmp(ReadRecords<char>(0, SELFMAG).data(), ELFMAG, SELFMAG) != 0)
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "it is no shared object");
    }
    header = ReadRecords<Elf64_Ehdr>(0, 1).front();
    if (header.e_ident[EI_CLASS] != ELFCLASS64 || header.e_ident[EI_DATA] != BYTE_ORDER_HERE ||
        header.e_machine != MACHINE)
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "it was built for another kind of machine");
    }
    if (header.e_type != ET_DYN)
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "it is no shared object");
    }
    if (header.e_phentsize != sizeof(Elf64_Phdr) || header.e_shentsize != sizeof(Elf64_Shdr))
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "it is damaged: its tables have entries of a wrong size");
    }
}

void ElfText::ReadSegments()
{
    for (Elf64_Phdr const& segment : ReadRecords<Elf64_Phdr>(header.e_phoff, header.e_phnum))
    {
        if (segment.p_type == PT_LOAD)
        {
            // A segment beyond the end of the file would be mapped without an error and end the process on access.
            CheckRange(segment.p_offset, segment.p_filesz);
            segments.push_back(segment);
        }
    }
}

void ElfText::ReadSymbols()
{
    std::vector<Elf64_Shdr> const sections = ReadRecords<Elf64_Shdr>(header.e_shoff, header.e_shnum);
    Elf64_Shdr const table = FindSymbolSection(sections);
    if (table.sh_entsize != sizeof(Elf64_Sym) || table.sh_link >= sections.size())
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "it is damaged: its table of symbols does not add up");
    }
    symbols = ReadRecords<Elf64_Sym>(table.sh_offset, table.sh_size / sizeof(Elf64_Sym));
    Elf64_Shdr const& texts = sections[table.sh_link];
    names = ReadRecords<char>(texts.sh_offset, texts.sh_size);
}

Elf64_Shdr ElfText::FindSymbolSection(std::vector<Elf64_Shdr> const& sections) const
{
    auto const found =
        std::ranges::find_if(sections, [](auto const& section) { return section.sh_type == SHT_DYNSYM; });
    if (found == sections.end())
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "it has no table of symbols");
    }
    return *found;
}

void ElfText::CheckRange(uint64 offset, uint64 size) const
{
    if (offset > fileSize || size > fileSize - offset)
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "it is cut short");
    }
}

template <typename Record>
std::vector<Record> ElfText::ReadRecords(uint64 offset, uint64 count)
{
    if (count > MAX_TABLE_BYTES / sizeof(Record))
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "it is damaged: a table is too large");
    }
    CheckRange(offset, count * sizeof(Record));
    std::vector<Record> records(count);
    file.seekg(static_cast<std::streamoff>(offset)); // the cast is safe: the offset lies in the file
    file.read(reinterpret_cast<char*>(records.data()), static_cast<std::streamsize>(count * sizeof(Record)));
    if (!file)
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "it cannot be read");
    }
    return records;
}

std::string_view ElfText::NameOf(Elf64_Sym const& symbol) const
{
    if (symbol.st_name >= names.size())
    {
        return {};
    }
    auto const first = names.begin() + symbol.st_name;
    return {first, std::find(first, names.end(), '\0')};
}

Elf64_Sym const* ElfText::FindDefined(std::string_view name, unsigned char type) const
{
    auto const found = std::ranges::find_if(symbols, [&](Elf64_Sym const& symbol) {
        return symbol.st_shndx != SHN_UNDEF && ELF64_ST_TYPE(symbol.st_info) == type && NameOf(symbol) == name;
    });
    return found != symbols.end() ? &*found : nullptr;
}

} // namespace ZuPlugin
