#include "concom/blob_store.hpp"

namespace qel::algorithm::concom {

std::size_t BlobStore::StitchBlobs(unsigned int min_area) noexcept {
    std::size_t kept = 0;
    for (std::size_t i = count_; i-- != 0;) {
        InternalBlob const& blob = records_[i];
        if (blob.parent == i) {
            if (blob.area >= min_area) ++kept;
            continue;
        }
        // Parents are older than their children: walking backwards, every box reaches its root.
        InternalBlob& parent = records_[blob.parent];
        parent.minX = std::min(parent.minX, blob.minX);
        parent.maxX = std::max(parent.maxX, blob.maxX);
        parent.maxY = std::max(parent.maxY, blob.maxY);
    }
    return kept;
}

void BlobStore::FilterBlobs(std::size_t count, unsigned int min_area,
                            std::vector<ConnectedComponents::Blob>& blobs) const {
    // Resized, not cleared and appended to: elements that stay are written once.
    blobs.resize(count);
    auto out = blobs.begin();
    for (std::size_t i = 0; i < count_; ++i) {
        InternalBlob const& blob = records_[i];
        if (blob.parent != i || blob.area < min_area) continue;
        *out++ = {blob.area, blob.minX, blob.firstY, blob.maxX, blob.maxY, blob.firstX, blob.firstY};
    }
}

}  // namespace qel::algorithm::concom
