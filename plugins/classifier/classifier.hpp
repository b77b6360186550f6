#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "classes.hpp"
#include "common/tunable.hpp"
#include "crop.hpp"
#include "qel/algorithm/info/base.hpp"
#include "qel/algorithm/video/passthrough/algorithm.hpp"
#include "qel/configuration/property.hpp"
#include "qel/inference/backend/manager.hpp"

namespace qel::classifier {

/// The dotted name by which the algorithm is chosen.
inline constexpr char const* TypeName = "qel.algorithm.video.Classifier";

/// The model that is used unless a person names another.
inline constexpr char const* DefaultModel = "classifier";

/// What a person may tune.
struct Settings {
    std::string model = DefaultModel;
    double minimumConfidence = 0.5;
    double margin = 0.1;  ///< of the box's width or height, on each side
};

/// Says what the objects are that earlier algorithms of the run have found: label and confidence of each become those
/// of the likeliest class of a network; where that is less sure than it should be, they stay as they are.
///
/// Takes each frame's network from the manager, so that another version serves from the next frame on. While there is
/// none, or one that cannot be used, objects pass unchanged; what is wrong is logged once a model. In offline mode the
/// first frame waits for the manager to load what is there.
///
/// Settings may be changed by any thread, everything else is for one thread at a time.
class Classifier final : public algorithm::video::passthrough::Algorithm, public plugin::Tunable<Settings> {
public:
    /// The manager must outlive the algorithm.
    explicit Classifier(inference::backend::Manager& manager);

    /// Throws std::invalid_argument, with the result unchanged, for a frame that cannot be read.
    void Process(media::video::FrameBase<void const> const& frame, algorithm::video::Result& result) override;

private:
    Classes const* FindClasses(std::string const& name);
    void Label(Classes const& classes, Settings const& settings, algorithm::video::Result& result);
    void GiveUp(std::string const& name, char const* reason);

    inference::backend::Manager& manager_;
    bool hasWaited_ = false;
    std::shared_ptr<inference::Model const> model_;  ///< what classes_ was made of
    std::optional<Classes> classes_;                 ///< none while the model cannot be used
    Cropper cropper_;
    std::vector<Cropper::Box> boxes_;
    std::vector<std::size_t> indices_;
    std::vector<inference::Picture> pictures_;
};

/// The properties of the algorithm: names, what they do, ranges, defaults.
std::vector<configuration::Property> const& Properties();

/// Creates the nodes of the properties under a map, and publishes the descriptor in the tree that the map is part of:
/// whenever a version of the default model has been loaded, the classes become its labels. Throws as
/// what registry::CreateNodes makes.
void CreateNodes(inference::backend::Manager& manager, std::shared_ptr<configuration::Node> const& node);

/// The descriptor of the algorithm: its classes are the labels that lie beside the default model now; none where there
/// are none that can be read.
std::shared_ptr<algorithm::info::Base> Describe(configuration::Node& root);

}  // namespace qel::classifier
