#include "concom/blob_store.hpp"

#include <numeric>

namespace qel::algorithm::concom {

std::size_t BlobStore::Reserve(BlobRecords& records, std::size_t more) {
    std::size_t const least = records.count + more;
    if (least > blobs_.size()) {
        // Room for one more such request: the next comes when the first record has been started.
        std::size_t const size = std::max(least + more, 2 * blobs_.size());
        firsts_.resize(size);
        merged_.resize(size);
        auto const known = static_cast<std::ptrdiff_t>(parents_.size());
        parents_.resize(size);
        std::iota(parents_.begin() + known, parents_.end(), static_cast<std::uint32_t>(known));
        blobs_.resize(size);
    }
    records.blobs = blobs_.data();
    records.firsts = firsts_.data();
    records.parents = parents_.data();
    records.merged = merged_.data();
    return blobs_.size();
}

void BlobStore::Clear(BlobRecords& records) noexcept {
    for (std::uint32_t i = 0; i < records.mergedCount; ++i) parents_[merged_[i]] = merged_[i];
    std::fill_n(blobs_.begin(), records.count, InternalBlob());
    records.count = records.mergedCount = 0;
}

void BlobStore::StitchBlobs(BlobRecords& records) noexcept {
    for (std::uint32_t i = 0; i < records.mergedCount; ++i) {
        std::uint32_t const loser = records.merged[i];
        records.blobs[records.FindRoot(loser)].AddBox(records.blobs[loser]);
    }
}

void BlobStore::FilterBlobs(BlobRecords const& records, unsigned int min_area,
                            std::vector<ConnectedComponents::Blob>& blobs) {
    auto const reported = [&](std::uint32_t i) -> std::size_t {
        return (records.parents[i] == i ? 1U : 0U) & (records.blobs[i].GetArea() >= min_area ? 1U : 0U);
    };
    std::size_t count = records.count - records.mergedCount;
    if (min_area != 0) {
        count = 0;
        for (std::uint32_t i = 0; i < records.count; ++i) count += reported(i);
    }
    // Resized, not cleared and appended to: elements that stay are written once. What is reported cannot be foreseen:
    // everything is written, and overwritten if it was not to be.
    blobs.resize(count + 1);
    auto out = blobs.begin();
    for (std::uint32_t i = 0; i < records.count; ++i) {
        InternalBlob const& blob = records.blobs[i];
        FirstPixel const first = records.firsts[i];
        *out = {blob.GetArea(), blob.GetMinX(), first.GetY(), blob.GetEndX() - 1,
                blob.GetMaxY(), first.GetX(),   first.GetY()};
        out += static_cast<std::ptrdiff_t>(reported(i));
    }
    blobs.pop_back();
}

}  // namespace qel::algorithm::concom
