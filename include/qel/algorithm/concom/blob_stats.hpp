#pragma once

#include <iosfwd>

#include "qel/algorithm/export.hpp"

namespace qel::algorithm::concom {

/// What LineByLineConnectedComponents knows of one run of a row, or of one blob. Columns are inclusive.
struct QEL_ALGORITHM_EXPORT BlobStats {
    BlobStats() noexcept = default;
    /// The fields in their order below.
    BlobStats(unsigned int parent, unsigned int min, unsigned int max, unsigned int width, unsigned int height,
              unsigned int min_bound, unsigned int max_bound, unsigned int area) noexcept;
    BlobStats(BlobStats const& other) noexcept = default;
    /// Leaves zeros behind.
    BlobStats(BlobStats&& other) noexcept;
    BlobStats& operator=(BlobStats other) noexcept;
    ~BlobStats() = default;

    friend bool operator==(BlobStats const&, BlobStats const&) = default;

    unsigned int parent{};     ///< the number, from 1, of the record that represents the blob
    unsigned int min{};        ///< first column in the latest row
    unsigned int max{};        ///< last column in the latest row
    unsigned int width{};      ///< largest extent in any one row
    unsigned int height{};     ///< rows spanned
    unsigned int min_bound{};  ///< smallest column of all rows
    unsigned int max_bound{};  ///< largest column of all rows
    unsigned int area{};       ///< pixels, as the labeller combines them
};

/// Exchanges the eight fields.
QEL_ALGORITHM_EXPORT void swap(BlobStats& a, BlobStats& b) noexcept;

/// Writes {"parent":0, "min":3, ... "area":12 }: a comma and a blank between fields and a blank before the brace.
QEL_ALGORITHM_EXPORT std::ostream& operator<<(std::ostream& stream, BlobStats const& stats);

}  // namespace qel::algorithm::concom
