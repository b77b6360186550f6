#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "concom/blob_store.hpp"
#include "concom/kernels.hpp"
#include "concom/mask_rows.hpp"
#include "qel/algorithm/connected_components.hpp"

namespace qel::algorithm::concom {

/// The work of ConnectedComponents, with a choice of how it is done; the result does not depend on it.
class Labeller {
public:
    enum class Manner { Runs, Bulk, Adaptive };

    explicit Labeller(Kernels const& kernels = GetKernels(), Manner manner = Manner::Adaptive)
        : kernels_(kernels), manner_(manner) {}

    /// See ConnectedComponents; diagonally: 8-way.
    std::size_t Connect(BitMask const& mask, bool diagonally, unsigned int min_area,
                        std::vector<ConnectedComponents::Blob>& blobs);

private:
    void InitialiseConcom(unsigned int width);
    void Initialise();
    void ConnectRows(std::size_t rows, bool diagonally);
    bool PaysInBulk() const;
    void JoinRuns();
    void SplitIntoRuns();

    Kernels const& kernels_;
    Manner manner_;
    BlobStore store_;
    MaskRows rows_{};
    unsigned int width_ = 0;  // what the buffers are large enough for
    std::unique_ptr<std::uint32_t[]> columns_;
    std::unique_ptr<Segment[]> segments_;
    std::unique_ptr<Lane[]> lanes_;
};

}  // namespace qel::algorithm::concom
