#include "mqtt/segment.hpp"

#include <algorithm>
#include <limits>
#include <utility>

#include <boost/filesystem/operations.hpp>

#include "error.hpp"
#include "mqtt/bytes.hpp"

namespace qel::serve::mqtt {
namespace {

constexpr std::string_view Magic = "QELSPOOL";
constexpr std::string_view Extension = ".segment";
constexpr std::size_t Digits = 20;

std::string MakeName(std::uint64_t first) {
    std::string digits = std::to_string(first);
    digits.insert(0, Digits - digits.size(), '0');
    return digits.append(Extension);
}

/// The number is part of the checksum, so that no bytes of another place or time are taken for a record.
std::uint32_t ChecksumOf(std::uint64_t number, std::string_view bytes) {
    std::string head;
    Put(head, static_cast<std::uint32_t>(bytes.size()));
    Put(head, number);
    boost::crc_32_type crc;
    crc.process_bytes(head.data(), head.size());
    crc.process_bytes(bytes.data(), bytes.size());
    return crc.checksum();
}

}  // namespace

Segment::Segment(boost::filesystem::path path, std::shared_ptr<File> file, std::uint64_t run, std::uint64_t first)
    : path_(std::move(path)), file_(std::move(file)), run_(run), first_(first), end_(first) {}

std::shared_ptr<Segment> Segment::Create(boost::filesystem::path const& folder, std::uint64_t run,
                                         std::uint64_t first) {
    boost::filesystem::path const path = folder / MakeName(first);
    auto file = std::make_shared<File>(path, File::Mode::Create);
    std::string header(Magic);
    Put(header, run);
    Put(header, first);
    Put(header, Checksum(header));
    try {
        file->WriteAt(0, header);
    } catch (...) {
        boost::system::error_code ignored;
        boost::filesystem::remove(path, ignored);
        throw;
    }
    return std::shared_ptr<Segment>(new Segment(path, std::move(file), run, first));
}

std::shared_ptr<Segment> Segment::Open(boost::filesystem::path const& path) {
    auto file = std::make_shared<File>(path, File::Mode::Read);
    std::string const header = file->ReadAt(0, HeaderSize);
    if (header.size() < HeaderSize || !header.starts_with(Magic)) return nullptr;
    auto const first = Get<std::uint64_t>(header, 16);
    bool const whole = Get<std::uint32_t>(header, 24) == Checksum(std::string_view(header).substr(0, 24));
    if (!whole || path.filename().string() != MakeName(first)) return nullptr;
    std::shared_ptr<Segment> segment(new Segment(path, std::move(file), Get<std::uint64_t>(header, 8), first));
    while (auto const bytes = segment->Read(segment->size_, segment->end_)) {
        segment->size_ += RecordHeaderSize + bytes->size();
        ++segment->end_;
    }
    segment->Rest();
    return segment;
}

bool Segment::IsName(std::string_view name) {
    return name.size() == Digits + Extension.size() && name.ends_with(Extension) &&
           name.find_first_not_of("0123456789") == Digits;
}

void Segment::Append(std::string_view bytes) {
    if (bytes.size() > std::numeric_limits<std::uint32_t>::max()) throw host::Error("a record of 4 GiB or more");
    std::string record;
    record.reserve(RecordHeaderSize + bytes.size());
    Put(record, static_cast<std::uint32_t>(bytes.size()));
    Put(record, ChecksumOf(end_, bytes));
    record += bytes;
    Wake().WriteAt(size_, record);
    size_ += record.size();
    ++end_;
}

std::optional<std::string> Segment::Read(std::uint64_t offset, std::uint64_t number) {
    File const& file = Wake();
    std::string const head = file.ReadAt(offset, RecordHeaderSize);
    if (head.size() < RecordHeaderSize) return std::nullopt;
    auto const length = Get<std::uint32_t>(head, 0);
    // A damaged length must not make anybody ask for gigabytes.
    if (length > file.GetSize() - offset - RecordHeaderSize) return std::nullopt;
    std::string bytes = file.ReadAt(offset + RecordHeaderSize, length);
    if (bytes.size() < length || Get<std::uint32_t>(head, 4) != ChecksumOf(number, bytes)) return std::nullopt;
    return bytes;
}

std::uint64_t Segment::FindOffset(std::uint64_t number) {
    std::uint64_t offset = HeaderSize;
    for (std::uint64_t at = first_; at < number; ++at) {
        std::string const length = Wake().ReadAt(offset, 4);
        if (length.size() < 4) break;
        offset += RecordHeaderSize + Get<std::uint32_t>(length);
    }
    return offset;
}

void Segment::CutAt(std::uint64_t number, std::uint64_t offset) {
    end_ = number;
    size_ = offset;
}

void Segment::Remove() {
    Rest();
    boost::system::error_code ignored;
    boost::filesystem::remove(path_, ignored);
}

File& Segment::Wake() {
    if (!file_) file_ = std::make_shared<File>(path_, File::Mode::Read);
    return *file_;
}

}  // namespace qel::serve::mqtt
