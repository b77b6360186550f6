#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "configured_algorithm.hpp"
#include "qel/algorithm/video/result.hpp"
#include "qel/hash/murmur_three_32.hpp"
#include "qel/media/colour_format.hpp"
#include "runtime.hpp"
#include "setting.hpp"
#include "working_frame.hpp"

namespace qel::host {

/// The algorithms of a run, in order: each is given the frame as the one before left it, and what they have found so
/// far.
class AlgorithmChain {
public:
    using Frame = WorkingFrame::Frame;

    /// runtime: outlives the chain. settings: "property", or "algorithm.property" where several algorithms have one of
    /// that name. Throws UsageError for a wrong or ambiguous setting, for an algorithm that is there twice, and for
    /// algorithms without a colour format in common; Error when one cannot be made.
    AlgorithmChain(Runtime& runtime, std::vector<hash::MurmurThree32> const& ids, std::vector<Setting> const& settings);

    /// The same with algorithms that each follow nodes of their own, or the runtime's; may be done on several threads
    /// of one runtime. Throws UsageError for none at all, too.
    AlgorithmChain(Runtime& runtime, std::vector<ChainLink> const& links);

    /// The formats that all of them accept, in the order of the first one's preference.
    std::vector<media::ColourFormat> const& GetColourFormats() const noexcept { return formats_; }
    /// The nodes of an algorithm's properties, by its place; a change takes effect on the next frame.
    configuration::node::Map& GetConfiguration(std::size_t index) { return algorithms_.at(index)->GetConfiguration(); }
    std::shared_ptr<algorithm::video::Algorithm> GetAlgorithm(std::size_t index) const {
        return algorithms_.at(index)->GetAlgorithm();
    }

    /// Has all algorithms look at a frame and add to the result; returns the frame as the last one leaves it.
    /// Throws Error with what an algorithm throws.
    Frame Process(Frame const& frame, algorithm::video::Result& result);

    /// Has all algorithms forget what they have seen, as the next frame does not continue it. Throws Error with what an
    /// algorithm throws.
    void Reset();

    /// The place of the algorithm that is at work, or was last. Any thread may read it, also when the chain has gone.
    std::shared_ptr<std::atomic<std::size_t> const> GetPlaceAtWork() const noexcept { return placeAtWork_; }

    /// How many frames have been copied: those whose pixels an algorithm changes while others hold them.
    std::uint64_t GetCopies() const noexcept { return frame_.GetCopies(); }

private:
    void Start(std::vector<Setting> const& settings);
    std::size_t FindOwner(Setting& setting) const;
    [[noreturn]] void RefuseName(Setting const& setting) const;
    void FindColourFormats();

    // Bindings hold on to an algorithm's place.
    std::vector<std::unique_ptr<ConfiguredAlgorithm>> algorithms_;
    std::vector<media::ColourFormat> formats_;
    WorkingFrame frame_;
    std::shared_ptr<std::atomic<std::size_t>> placeAtWork_ = std::make_shared<std::atomic<std::size_t>>(0);
};

}  // namespace qel::host
