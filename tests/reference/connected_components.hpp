#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "qel/algorithm/bit_mask.hpp"
#include "qel/algorithm/connected_components.hpp"
#include "reference/pixels.hpp"

namespace qel::reference {

/// Labels pixel by pixel with a record for every pixel there could be: what ConnectedComponents has to give.
class PixelLabeller {
public:
    using Blob = algorithm::ConnectedComponents::Blob;

    std::vector<Blob> Connect8Way(algorithm::BitMask const& mask, unsigned int min_area) {
        return Connect(mask, min_area, &PixelLabeller::CombineBlob8Way);
    }
    std::vector<Blob> Connect4Way(algorithm::BitMask const& mask, unsigned int min_area) {
        return Connect(mask, min_area, &PixelLabeller::CombineBlob4Way);
    }

private:
    struct InternalBlob {
        Blob blob;
        InternalBlob* parent = nullptr;
    };
    struct Neighbours {
        InternalBlob *left, *upLeft, *up, *upRight;
    };
    using Rule = InternalBlob* (*)(Neighbours const&);

    static InternalBlob* FindRoot(InternalBlob* record) {
        while (record->parent != nullptr) record = record->parent;
        return record;
    }

    static InternalBlob* MergeBlobs(InternalBlob* a, InternalBlob* b) {
        InternalBlob* const rootA = FindRoot(a);
        InternalBlob* const rootB = FindRoot(b);
        if (rootA == rootB) return rootA;
        InternalBlob* const winner = std::min(rootA, rootB);
        InternalBlob* const loser = std::max(rootA, rootB);
        loser->parent = winner;
        winner->blob.area += loser->blob.area;
        loser->blob.area = 0;
        return winner;
    }

    static InternalBlob* CombineBlob4Way(Neighbours const& n) {
        if (n.left == nullptr) return n.up;
        if (n.up == nullptr || n.up == n.left) return n.left;
        return MergeBlobs(n.left, n.up);
    }

    static InternalBlob* CombineBlob8Way(Neighbours const& n) {
        InternalBlob* upper = n.upRight;
        if (n.up != nullptr) {
            upper = n.upRight != nullptr && n.upRight != n.up ? MergeBlobs(n.up, n.upRight) : n.up;
        }
        InternalBlob* left = n.upLeft;
        if (n.left != nullptr) {
            left = n.upLeft != nullptr && n.upLeft != n.left ? MergeBlobs(n.left, n.upLeft) : n.left;
        }
        if (left == nullptr) return upper;
        if (upper == nullptr || upper == left) return left;
        return MergeBlobs(left, upper);
    }

    std::vector<Blob> Connect(algorithm::BitMask const& mask, unsigned int min_area, Rule combine) {
        unsigned int const width = mask.GetSize().width, height = mask.GetSize().height;
        std::vector<InternalBlob> store(static_cast<std::size_t>(width) * height);
        InternalBlob* next = store.data();
        std::vector<InternalBlob*> above(width + 2), current(width + 2);
        for (unsigned int y = 0; y < height; ++y) {
            for (unsigned int x = 0; x < width; ++x) {
                current[x + 1] = nullptr;
                if (!Get(mask, x, y)) continue;
                InternalBlob* record = combine({current[x], above[x], above[x + 1], above[x + 2]});
                if (record != nullptr) {
                    Blob& blob = record->blob;
                    blob.minX = std::min(blob.minX, x);
                    blob.maxX = std::max(blob.maxX, x);
                    blob.minY = std::min(blob.minY, y);
                    blob.maxY = y;
                    ++blob.area;
                } else {
                    record = next++;
                    record->blob = {1, x, y, x, y, x, y};
                }
                current[x + 1] = record;
            }
            above.swap(current);
        }
        for (std::size_t i = static_cast<std::size_t>(next - store.data()); i-- != 0;) {
            if (store[i].parent == nullptr) continue;
            Blob const& child = store[i].blob;
            Blob& parent = store[i].parent->blob;
            parent.minX = std::min(parent.minX, child.minX);
            parent.minY = std::min(parent.minY, child.minY);
            parent.maxX = std::max(parent.maxX, child.maxX);
            parent.maxY = std::max(parent.maxY, child.maxY);
        }
        std::vector<Blob> blobs;
        for (InternalBlob const* record = store.data(); record != next; ++record) {
            if (record->parent == nullptr && record->blob.area >= min_area) blobs.push_back(record->blob);
        }
        return blobs;
    }
};

}  // namespace qel::reference
