// A row of a portable bitmap is a row of the mask: most significant bit first, here in whole words.
#include "support/mask_files.hpp"

#include <algorithm>
#include <array>
#include <fstream>
#include <stdexcept>
#include <string>

namespace qel::benchmarks {

void WriteMask(algorithm::BitMask const& mask, std::filesystem::path const& file) {
    if (mask.GetSize().width % 32 != 0)
        throw std::runtime_error(file.string() + ": the width must be a multiple of 32");
    std::ofstream out(file, std::ios::binary);
    out << "P4\n" << mask.GetSize().width << ' ' << mask.GetSize().height << '\n';
    for (std::uint32_t const word : mask.GetData()) {
        for (int shift = 24; shift >= 0; shift -= 8) out.put(static_cast<char>(word >> shift & 0xFFU));
    }
    if (!out.flush()) throw std::runtime_error(file.string() + ": cannot be written");
}

namespace {

algorithm::BitMask ReadMask(std::filesystem::path const& file) {
    std::ifstream in(file, std::ios::binary);
    std::string magic;
    Size size{};
    in >> magic >> size.width >> size.height;
    in.get();
    if (!in || magic != "P4" || size.width % 32 != 0) throw std::runtime_error(file.string() + ": is no mask");
    algorithm::BitMask mask(size);
    for (std::uint32_t& word : mask.GetData()) {
        std::array<char, 4> bytes{};
        in.read(bytes.data(), bytes.size());
        for (char const byte : bytes) word = word << 8 | static_cast<unsigned char>(byte);
    }
    if (!in) throw std::runtime_error(file.string() + ": ends early");
    return mask;
}

}  // namespace

std::vector<NamedMask> ReadMasks(std::filesystem::path const& folder) {
    std::vector<NamedMask> masks;
    if (!std::filesystem::is_directory(folder)) return masks;
    for (auto const& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() == ".pbm") masks.push_back({entry.path().stem().string(), ReadMask(entry.path())});
    }
    std::sort(masks.begin(), masks.end(), [](NamedMask const& a, NamedMask const& b) { return a.name < b.name; });
    return masks;
}

}  // namespace qel::benchmarks
