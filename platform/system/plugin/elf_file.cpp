// Reads just enough of an ELF file: header -> program headers -> dynamic section -> its strings. Nothing in the file
// is trusted: each read states its offset and size, and fails when the file does not have them.

#include "qel/system/plugin/elf_file.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include <boost/filesystem/operations.hpp>
#include <elf.h>
#include <link.h>

namespace qel::system::plugin {
namespace {

using Header = ElfW(Ehdr);
using Segment = ElfW(Phdr);
using Entry = ElfW(Dyn);

constexpr std::uint64_t MaxDynamicSize = 1U << 20U;
constexpr std::size_t MaxNameSize = 4096;

class Reader {
public:
    explicit Reader(boost::filesystem::path const& path) : stream_(path.string(), std::ios::binary) {
        if (!stream_) throw std::runtime_error("cannot be read: " + std::generic_category().message(errno));
        size_ = boost::filesystem::file_size(path);
    }

    std::uint64_t GetSize() const { return size_; }
    bool Has(std::uint64_t offset, std::uint64_t size) const { return offset <= size_ && size <= size_ - offset; }

    void Read(std::uint64_t offset, void* target, std::uint64_t size) {
        stream_.clear();
        stream_.seekg(static_cast<std::streamoff>(offset));
        stream_.read(static_cast<char*>(target), static_cast<std::streamsize>(size));
        if (!stream_) throw std::runtime_error("cannot be read: the file ends early or the disk fails");
    }

    template <class T>
    std::vector<T> ReadTable(std::uint64_t offset, std::uint64_t count) {
        if (count > size_ / sizeof(T) || !Has(offset, count * sizeof(T))) ThrowCutShort();
        std::vector<T> table(count);
        Read(offset, table.data(), count * sizeof(T));
        return table;
    }

    std::string ReadName(std::uint64_t offset) {
        if (offset >= size_) ThrowCutShort();
        std::vector<char> text(std::min<std::uint64_t>(MaxNameSize, size_ - offset));
        Read(offset, text.data(), text.size());
        return {text.begin(), std::find(text.begin(), text.end(), '\0')};
    }

    [[noreturn]] void ThrowCutShort() const {
        throw std::runtime_error("is cut short or damaged: its header announces more than its " +
                                 std::to_string(size_) + " bytes");
    }

private:
    std::ifstream stream_;
    std::uint64_t size_ = 0;
};

std::string NameMachine(unsigned int machine, unsigned char elfClass) {
    switch (machine) {
        case EM_386:
            return "x86 (32 bits)";
        case EM_ARM:
            return "ARM (32 bits)";
        case EM_X86_64:
            return elfClass == ELFCLASS64 ? "x86-64" : "x32";
        case EM_AARCH64:
            return "AArch64";
        case EM_RISCV:
            return "RISC-V";
        default:
            return "machine number " + std::to_string(machine);
    }
}

Header ReadHeader(Reader& reader) {
    Header header{};
    if (reader.GetSize() < sizeof(Header)) {
        throw std::runtime_error("is not a shared library: it is only " + std::to_string(reader.GetSize()) +
                                 " bytes long");
    }
    reader.Read(0, &header, sizeof(header));
    if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) {
        throw std::runtime_error("is not a shared library: its first bytes are not those of an ELF file");
    }
    return header;
}

/// Compares with the program that runs: the one kind of file that certainly loads here.
void CheckMachine(Header const& header) {
    Reader program("/proc/self/exe");
    Header const own = ReadHeader(program);
    if (header.e_machine != own.e_machine || header.e_ident[EI_CLASS] != own.e_ident[EI_CLASS] ||
        header.e_ident[EI_DATA] != own.e_ident[EI_DATA]) {
        throw std::runtime_error(
            "was built for another architecture: " + NameMachine(header.e_machine, header.e_ident[EI_CLASS]) +
            ", while this process is " + NameMachine(own.e_machine, own.e_ident[EI_CLASS]));
    }
}

void CheckKind(Header const& header) {
    switch (header.e_type) {
        case ET_DYN:
            return;
        case ET_EXEC:
            throw std::runtime_error("is a program, not a shared library");
        case ET_REL:
            throw std::runtime_error("is an object file, not a shared library: it was never linked");
        case ET_CORE:
            throw std::runtime_error("is a core dump, not a shared library");
        default:
            throw std::runtime_error("is not a shared library but an ELF file of another kind");
    }
}

void CheckComplete(Reader const& reader, std::vector<Segment> const& segments) {
    for (Segment const& segment : segments) {
        if (segment.p_type == PT_LOAD && !reader.Has(segment.p_offset, segment.p_filesz)) reader.ThrowCutShort();
    }
}

/// The offset in the file of an address in memory; the file's size when no segment holds it.
std::uint64_t FindOffset(Reader const& reader, std::vector<Segment> const& segments, std::uint64_t address) {
    for (Segment const& segment : segments) {
        if (segment.p_type != PT_LOAD || address < segment.p_vaddr) continue;
        if (address - segment.p_vaddr < segment.p_filesz) return segment.p_offset + (address - segment.p_vaddr);
    }
    return reader.GetSize();
}

std::vector<Entry> ReadDynamicSection(Reader& reader, std::vector<Segment> const& segments) {
    for (Segment const& segment : segments) {
        if (segment.p_type != PT_DYNAMIC) continue;
        auto const size = std::min<std::uint64_t>(segment.p_filesz, MaxDynamicSize);
        auto entries = reader.ReadTable<Entry>(segment.p_offset, size / sizeof(Entry));
        entries.erase(std::find_if(entries.begin(), entries.end(), [](Entry const& e) { return e.d_tag == DT_NULL; }),
                      entries.end());
        return entries;
    }
    return {};
}

}  // namespace

ElfFile ReadElfFile(boost::filesystem::path const& path) {
    Reader reader(path);
    Header const header = ReadHeader(reader);
    CheckMachine(header);
    CheckKind(header);
    if (header.e_phentsize != sizeof(Segment)) throw std::runtime_error("is damaged: its ELF header makes no sense");
    auto const segments = reader.ReadTable<Segment>(header.e_phoff, header.e_phnum);
    CheckComplete(reader, segments);

    auto const entries = ReadDynamicSection(reader, segments);
    std::uint64_t names = reader.GetSize();
    for (Entry const& entry : entries) {
        if (entry.d_tag == DT_STRTAB) names = FindOffset(reader, segments, entry.d_un.d_ptr);
        if (entry.d_tag == DT_FLAGS_1 && (entry.d_un.d_val & DF_1_PIE) != 0) {
            throw std::runtime_error("is a program, not a shared library");
        }
    }
    ElfFile file;
    for (Entry const& entry : entries) {
        if (entry.d_tag == DT_NEEDED) file.needed.push_back(reader.ReadName(names + entry.d_un.d_val));
        if (entry.d_tag == DT_SONAME) file.soname = reader.ReadName(names + entry.d_un.d_val);
    }
    return file;
}

}  // namespace qel::system::plugin
