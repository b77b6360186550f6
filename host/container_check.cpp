// Method: each of the three families is a row of parts that begin with their own size. The parts are walked without
// reading their contents; the part that reaches furthest beyond the end of the file tells how much is missing.
#include "container_check.hpp"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string_view>

namespace qel::host {
namespace {

/// The bytes of a file, by position.
class Bytes {
public:
    explicit Bytes(std::string const& path) : file_(path, std::ios::binary) {
        file_.seekg(0, std::ios::end);
        auto const end = file_.tellg();
        size_ = end > 0 ? static_cast<std::uint64_t>(end) : 0;
    }

    std::uint64_t Size() const noexcept { return size_; }

    /// Up to 16 bytes at a position, zero beyond the end.
    std::array<unsigned char, 16> At(std::uint64_t position) {
        std::array<unsigned char, 16> bytes{};
        file_.clear();
        file_.seekg(static_cast<std::streamoff>(position));
        file_.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return bytes;
    }

private:
    std::ifstream file_;
    std::uint64_t size_ = 0;
};

constexpr std::string_view EbmlHeader = "\x1A\x45\xDF\xA3";
constexpr std::string_view Segment = "\x18\x53\x80\x67";

using Head = std::array<unsigned char, 16>;

bool Has(Head const& head, std::size_t position, std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (head[position + i] != static_cast<unsigned char>(text[i])) return false;
    }
    return true;
}

std::uint64_t BigEndian(Head const& head, std::size_t position, std::size_t count) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < count; ++i) value = value << 8U | head[position + i];
    return value;
}

std::uint64_t LittleEndian32(Head const& head, std::size_t position) {
    std::uint64_t value = 0;
    for (std::size_t i = 4; i-- > 0;) value = value << 8U | head[position + i];
    return value;
}

/// Whether a box may be of this type; what follows the last box of a file is often no box at all.
bool IsBoxType(Head const& head) {
    return std::all_of(head.begin() + 4, head.begin() + 8, [](unsigned char c) { return c >= 0x20 && c < 0x7F; });
}

std::uint64_t MissingOfRiff(Bytes& bytes) {
    std::uint64_t position = 0;
    while (position + 8 <= bytes.Size()) {
        Head const head = bytes.At(position);
        if (!Has(head, 0, "RIFF")) return 0;
        std::uint64_t const length = LittleEndian32(head, 4);
        // 0 and the largest number stand for "not known yet" in files that were never closed.
        if (length == 0 || length == 0xFFFFFFFFU) return 0;
        std::uint64_t const end = position + 8 + length;
        // Some writers leave out the byte that pads the last part to an even length.
        if (end > bytes.Size() + 1) return end - bytes.Size();
        position = end + length % 2;
    }
    return 0;
}

std::uint64_t MissingOfIso(Bytes& bytes) {
    std::uint64_t position = 0;
    while (position + 8 <= bytes.Size()) {
        Head const head = bytes.At(position);
        std::uint64_t length = BigEndian(head, 0, 4);
        if (length == 0) return 0;  // the last box, which reaches to the end of the file
        if (length == 1) length = BigEndian(head, 8, 8);
        if (length < 8 || length > UINT64_MAX - position || !IsBoxType(head)) return 0;
        if (position + length > bytes.Size()) return position + length - bytes.Size();
        position += length;
    }
    return 0;
}

/// A number of Matroska whose first set bit tells its length in bytes; nothing when its bits say "not known".
struct EbmlSize {
    std::size_t length = 0;
    std::optional<std::uint64_t> value;
};

EbmlSize ReadEbmlSize(Head const& head, std::size_t position) {
    std::size_t length = 1;
    while (length <= 8 && (head[position] & (0x80U >> (length - 1))) == 0) ++length;
    if (length > 8) return {};
    std::uint64_t const mask = (std::uint64_t{1} << (7 * length)) - 1;
    std::uint64_t const value = BigEndian(head, position, length) & mask;
    if (value == mask) return {length, std::nullopt};
    return {length, value};
}

std::uint64_t MissingOfMatroska(Bytes& bytes) {
    std::uint64_t position = 0;
    while (position + 5 <= bytes.Size()) {
        Head const head = bytes.At(position);
        if (!Has(head, 0, EbmlHeader) && !Has(head, 0, Segment)) return 0;
        EbmlSize const size = ReadEbmlSize(head, 4);
        if (!size.value || *size.value > UINT64_MAX / 2) return 0;
        std::uint64_t const end = position + 4 + size.length + *size.value;
        if (end > bytes.Size()) return end - bytes.Size();
        position = end;
    }
    return 0;
}

}  // namespace

std::uint64_t CountMissingBytes(std::string const& path) {
    // Only a regular file has a size to compare with; opening anything else might wait.
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(path, ignored)) return 0;
    Bytes bytes(path);
    if (bytes.Size() < 8) return 0;
    Head const head = bytes.At(0);
    if (Has(head, 0, "RIFF")) return MissingOfRiff(bytes);
    if (Has(head, 0, EbmlHeader)) return MissingOfMatroska(bytes);
    if (Has(head, 4, "ftyp")) return MissingOfIso(bytes);
    return 0;
}

}  // namespace qel::host
