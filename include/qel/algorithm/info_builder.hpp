#pragma once

#include <memory>

#include <boost/core/span.hpp>

#include "qel/algorithm/export.hpp"
#include "qel/algorithm/info/base.hpp"
#include "qel/inference/backend/manager.hpp"
#include "qel/inference/model/state.hpp"

namespace qel::algorithm {

/// Publishes the descriptors of algorithms below "algorithms.info" of the configuration tree.
class QEL_ALGORITHM_EXPORT InfoBuilder {
public:
    InfoBuilder() = delete;

    /// Publishes a descriptor: makes the algorithm's map with its values, has the manager tell the states of its models
    /// from now on, takes the version from the first model's "onnx/metadata.json" where that file exists, and at last
    /// inserts the map into "algorithms.info" of the descriptor's root.
    ///
    /// "model_status" is the combined state of all models and fires when that changes; the manager may call on any
    /// threads, also before Register returns. The descriptor is not kept. Descriptors of one tree are registered one
    /// at a time. Throws object::BadCast for a root that is no
    /// map, boost::filesystem::filesystem_error when it cannot be told whether the file exists, cereal::Exception for a
    /// file that cannot be read, and what the configuration tree throws; in each of these cases the algorithm's map is
    /// not inserted, and callbacks that are registered stay so.
    static void Register(inference::backend::Manager& manager, std::shared_ptr<info::Base> info);

    /// One state for several models. The first rule that applies:
    /// all are Loaded, or there is none: (Loaded, Ended); one has Failed: (Failed, Ended); none has both begun to load
    /// and begun to build: (Unloaded, NotStarted); one is Building: (Loading, Building); otherwise (Loading, Built).
    static inference::model::State GetCombinedState(boost::span<inference::model::State const> states);
};

}  // namespace qel::algorithm
