#include "mqtt/spool.hpp"

#include <algorithm>
#include <deque>
#include <mutex>
#include <random>
#include <utility>
#include <vector>

#include <boost/filesystem/directory.hpp>
#include <boost/filesystem/operations.hpp>

#include "error.hpp"
#include "file.hpp"
#include "mqtt/bytes.hpp"
#include "mqtt/position.hpp"
#include "mqtt/segment.hpp"

// Records are only ever put behind others, into files that are deleted as a whole, so nothing that was stored is ever
// written again. Each process begins a file of its own: what a crash left at the end of the last one stays there,
// unread.
namespace qel::serve::mqtt {
namespace {

constexpr std::uint64_t MinBytes = 4096;
constexpr std::uint64_t Parts = 16;

std::uint64_t MakeRandom() {
    std::random_device random;
    return static_cast<std::uint64_t>(random()) << 32U | random();
}

/// The text that the file holds, made by chance where it holds none.
std::string ReadId(boost::filesystem::path const& path) {
    File file(path, File::Mode::Update);
    std::string id = file.ReadAt(0, 16);
    if (id.size() == 16 && id.find_first_not_of("0123456789abcdef") == std::string::npos) return id;
    id = ToHex(MakeRandom());
    file.WriteAt(0, id);
    file.Sync();
    return id;
}

boost::filesystem::path const& MakeFolder(boost::filesystem::path const& folder) {
    boost::system::error_code error;
    bool const made = boost::filesystem::create_directories(folder, error);
    if (error) throw host::Error("cannot make the folder '" + folder.string() + "': " + error.message());
    // Detections may tell of people.
    if (made) boost::filesystem::permissions(folder, boost::filesystem::owner_all, error);
    return folder;
}

}  // namespace

struct Spool::Impl {
    struct Place {
        std::uint64_t number = 0;
        std::uint64_t offset = 0;
    };

    Impl(boost::filesystem::path where, std::uint64_t most)
        : folder(MakeFolder(where)), maxBytes(most), lock(folder / "lock", File::Mode::Update) {
        if (!lock.Lock()) {
            throw host::Error("another program uses the spool '" + folder.string() +
                              "': end it first, or give each a folder of its own");
        }
        id = ReadId(folder / "id");
        position.emplace(folder / "position");
        OpenSegments();
    }

    void OpenSegments() {
        std::vector<boost::filesystem::path> paths;
        for (auto const& entry : boost::filesystem::directory_iterator(folder)) {
            if (Segment::IsName(entry.path().filename().string())) paths.push_back(entry.path());
        }
        std::sort(paths.begin(), paths.end());
        std::uint64_t const done = position->Get();
        next = done + 1;
        for (auto const& path : paths) {
            auto segment = Segment::Open(path);
            if (!segment || segment->GetEnd() <= std::max(done + 1, segment->GetFirst())) {
                boost::filesystem::remove(path);
                continue;
            }
            // Records that are missing between two files; those before the first were counted when they were lost.
            if (!segments.empty() && segment->GetFirst() > next) lost += segment->GetFirst() - next;
            next = segment->GetEnd();
            bytes += segment->GetSize();
            segments.push_back(std::move(segment));
        }
        cursor.number = done + 1;
        if (!segments.empty() && segments.front()->GetFirst() <= cursor.number) {
            cursor.offset = segments.front()->FindOffset(cursor.number);
        }
    }

    void Append(std::string_view record) {
        std::uint64_t const size = Segment::RecordHeaderSize + record.size();
        std::uint64_t const partBytes = maxBytes / Parts;
        if (Segment::HeaderSize + size > partBytes) {
            throw host::Error("a message of " + std::to_string(record.size()) + " bytes is too large for a spool of " +
                              std::to_string(maxBytes));
        }
        if (active && active->GetSize() + size > partBytes) active = nullptr;
        while (!segments.empty() && bytes + size + (active ? 0 : Segment::HeaderSize) > maxBytes) DropOldest();
        if (!active) {
            active = Segment::Create(folder, run, next);
            segments.push_back(active);
            bytes += Segment::HeaderSize;
            folderChanged = true;
        }
        active->Append(record);
        bytes += size;
        ++next;
        if (unsynced.empty() || unsynced.back() != active->GetFile()) unsynced.push_back(active->GetFile());
    }

    void DropOldest() {
        Segment const& oldest = *segments.front();
        std::uint64_t const firstLost = std::max(oldest.GetFirst(), cursor.number);
        if (firstLost < oldest.GetEnd()) lost += oldest.GetEnd() - firstLost;
        RemoveOldest();
    }

    void RemoveOldest() {
        bytes -= segments.front()->GetSize();
        segments.front()->Remove();
        if (segments.front() == active) active = nullptr;
        segments.pop_front();
    }

    /// The file that holds the record of the cursor, which is moved over those that are lost; null at the end.
    Segment* FindCursor() {
        for (auto const& segment : segments) {
            if (cursor.number < segment->GetFirst()) cursor = {segment->GetFirst(), Segment::HeaderSize};
            if (cursor.number < segment->GetEnd()) {
                if (cursor.number == segment->GetFirst()) cursor.offset = Segment::HeaderSize;
                return segment.get();
            }
            if (segment != active) segment->Rest();
        }
        return nullptr;
    }

    std::optional<Record> Take() {
        while (Segment* const segment = FindCursor()) {
            auto record = segment->Read(cursor.offset, cursor.number);
            if (!record) {
                GiveUp(*segment);
                continue;
            }
            Place const place = cursor;
            taken.push_back(place);
            cursor = {place.number + 1, place.offset + Segment::RecordHeaderSize + record->size()};
            return Record{segment->GetRun(), place.number, std::move(*record)};
        }
        return std::nullopt;
    }

    /// The records of a file from the cursor on turn out to be damaged.
    void GiveUp(Segment& segment) {
        lost += segment.GetEnd() - cursor.number;
        bytes -= segment.GetSize() - cursor.offset;
        segment.CutAt(cursor.number, cursor.offset);
        if (active.get() == &segment) active = nullptr;
    }

    void Complete(std::uint64_t number) {
        while (!taken.empty() && taken.front().number <= number) taken.pop_front();
        position->Set(number);
        positionChanged = true;
        while (!segments.empty() && segments.front() != active && segments.front()->GetEnd() <= number + 1) {
            RemoveOldest();
        }
    }

    void Rewind() {
        if (taken.empty()) return;
        // What was dropped after it had been taken was not lost until now.
        std::uint64_t const oldest = segments.empty() ? next : segments.front()->GetFirst();
        lost += static_cast<std::uint64_t>(
            std::count_if(taken.begin(), taken.end(), [&](Place const& place) { return place.number < oldest; }));
        cursor = taken.front();
        taken.clear();
    }

    mutable std::mutex mutex;
    std::mutex syncing;
    boost::filesystem::path folder;
    std::uint64_t maxBytes;
    File lock;
    std::string id{};
    std::uint64_t run = MakeRandom();
    std::optional<Position> position{};
    std::deque<std::shared_ptr<Segment>> segments{};  // oldest first
    std::shared_ptr<Segment> active{};                // the last of them, while records are put into it
    std::uint64_t next = 1;
    std::uint64_t bytes = 0;
    std::uint64_t lost = 0;
    Place cursor{};             // the next record to be taken
    std::deque<Place> taken{};  // and not completed
    std::vector<std::shared_ptr<File const>> unsynced{};
    bool positionChanged = false;
    bool folderChanged = false;
};

Spool::Spool(boost::filesystem::path folder, std::uint64_t maxBytes) {
    if (maxBytes < MinBytes) throw host::Error("a spool takes at least " + std::to_string(MinBytes) + " bytes");
    impl_ = std::make_unique<Impl>(std::move(folder), maxBytes);
}

Spool::~Spool() {
    try {
        Sync();
    } catch (std::exception const&) {
        // The system keeps what was written for as long as it runs.
    }
}

void Spool::Append(std::string_view bytes) {
    std::lock_guard const guard(impl_->mutex);
    try {
        impl_->Append(bytes);
    } catch (...) {
        ++impl_->lost;
        throw;
    }
}

std::optional<Spool::Record> Spool::Take() {
    std::lock_guard const guard(impl_->mutex);
    return impl_->Take();
}

void Spool::Complete(std::uint64_t number) {
    std::lock_guard const guard(impl_->mutex);
    impl_->Complete(number);
}

void Spool::Rewind() {
    std::lock_guard const guard(impl_->mutex);
    impl_->Rewind();
}

void Spool::Sync() {
    std::lock_guard const one(impl_->syncing);
    std::vector<std::shared_ptr<File const>> files;
    bool folderChanged = false;
    {
        std::lock_guard const guard(impl_->mutex);
        files = std::exchange(impl_->unsynced, {});
        if (std::exchange(impl_->positionChanged, false)) files.push_back(impl_->position->GetFile());
        folderChanged = std::exchange(impl_->folderChanged, false);
    }
    for (auto const& file : files) file->Sync();
    if (folderChanged) SyncFolder(impl_->folder);
}

Spool::Counts Spool::GetCounts() const {
    std::lock_guard const guard(impl_->mutex);
    Counts counts{0, impl_->bytes, impl_->lost};
    std::uint64_t const done = impl_->position->Get();
    for (auto const& segment : impl_->segments) {
        std::uint64_t const first = std::max(segment->GetFirst(), done + 1);
        if (first < segment->GetEnd()) counts.messages += segment->GetEnd() - first;
    }
    return counts;
}

std::string const& Spool::GetId() const noexcept { return impl_->id; }

}  // namespace qel::serve::mqtt
