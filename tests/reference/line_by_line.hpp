#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "qel/algorithm/concom/blob_stats.hpp"

namespace qel::reference {

/// Labels row by row, walking pixels and searching lists: what LineByLineConnectedComponents has to give.
class LineLabeller {
public:
    using BlobStats = algorithm::concom::BlobStats;

    explicit LineLabeller(unsigned int width) : width_(width) {}

    std::vector<BlobStats> LineByLine8Way(std::uint32_t const* row) {
        std::vector<BlobStats> current(1);
        bool inside = false;
        for (unsigned int x = 0; x < width_; ++x) {
            bool const set = (row[x / 32] >> (31 - x % 32) & 1U) != 0;
            if (set && !inside) {
                current.emplace_back();
                current.back().min = x;
            }
            if (set) {
                current.back().max = x;
                ++current.back().area;
            }
            inside = set;
        }
        std::vector<unsigned int> labelMap(open_.size() + 1);
        std::size_t first = 1;
        for (unsigned int number = 1; number < current.size(); ++number) {
            BlobStats& k = current[number];
            k.parent = number;
            k.min_bound = k.min;
            k.max_bound = k.max;
            unsigned int candidate = 0;
            for (std::size_t at = first; at < previous_.size() && previous_[at].min <= k.max + 1; ++at) {
                BlobStats const& p = previous_[at];
                if (p.max + 1 < k.min) {
                    first = at + 1;
                    continue;
                }
                if (labelMap[p.parent] == 0) {
                    labelMap[p.parent] = number;
                } else {
                    k.parent = std::min(k.parent, current[labelMap[p.parent]].parent);
                }
                candidate = std::max(candidate, p.height);
                k.min_bound = std::min(k.min_bound, p.min_bound);
                k.max_bound = std::max(k.max_bound, p.max_bound);
                k.area = k.area + p.area;
            }
            k.height = candidate + 1;
        }
        std::vector<BlobStats> finished;
        for (std::size_t i = 1; i <= open_.size(); ++i) {
            BlobStats const& blob = open_[i - 1];
            if (labelMap[i] == 0) {
                finished.push_back(blob);
            } else {
                current[labelMap[i]].width = std::max(current[labelMap[i]].width, blob.width);
            }
        }
        open_.clear();
        for (unsigned int number = 1; number < current.size(); ++number) {
            BlobStats& run = current[number];
            if (run.parent == number) {
                run.width = std::max(run.max + 1 - run.min, run.width);
                open_.push_back(run);
                run.parent = static_cast<unsigned int>(open_.size());
                continue;
            }
            std::size_t position = 0;
            while (open_[position].parent != run.parent) ++position;
            BlobStats& blob = open_[position];
            blob.min = std::min(blob.min, run.min);
            blob.max = std::max(blob.max, run.max);
            blob.width = std::max({blob.max + 1 - blob.min, blob.width, run.width});
            blob.height = std::max(blob.height, run.height);
            blob.min_bound = std::min(blob.min_bound, run.min_bound);
            blob.max_bound = std::max(blob.max_bound, run.max_bound);
            blob.area = std::max(blob.area, run.area);
            run.parent = static_cast<unsigned int>(position + 1);
        }
        for (std::size_t i = 0; i < open_.size(); ++i) open_[i].parent = static_cast<unsigned int>(i + 1);
        previous_ = current;
        return finished;
    }

private:
    unsigned int width_;
    std::vector<BlobStats> previous_ = std::vector<BlobStats>(1);
    std::vector<BlobStats> open_;
};

}  // namespace qel::reference
