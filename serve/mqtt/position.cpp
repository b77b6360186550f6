#include "mqtt/position.hpp"

#include <string>
#include <string_view>

#include "mqtt/bytes.hpp"

namespace qel::serve::mqtt {
namespace {

constexpr std::uint64_t PlaceSize = 512;
constexpr std::size_t EntrySize = 12;

}  // namespace

Position::Position(boost::filesystem::path const& path) : file_(std::make_shared<File>(path, File::Mode::Update)) {
    for (std::uint64_t place = 0; place < 2; ++place) {
        std::string const entry = file_->ReadAt(place * PlaceSize, EntrySize);
        if (entry.size() < EntrySize) continue;
        if (mqtt::Get<std::uint32_t>(entry, 8) != Checksum(std::string_view(entry).substr(0, 8))) continue;
        auto const number = mqtt::Get<std::uint64_t>(entry);
        if (number < number_) continue;
        number_ = number;
        nextPlace_ = 1 - place;
    }
}

void Position::Set(std::uint64_t number) {
    std::string entry;
    Put(entry, number);
    Put(entry, Checksum(entry));
    number_ = number;
    file_->WriteAt(nextPlace_ * PlaceSize, entry);
    nextPlace_ = 1 - nextPlace_;
}

}  // namespace qel::serve::mqtt
