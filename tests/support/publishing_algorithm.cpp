// Video algorithms that publish what they are: "test.Followed" follows the model "shapes", "test.Coloured" names
// colours without one, and "test.Mute" cannot describe itself.

#include <memory>
#include <stdexcept>
#include <string>

#include "qel/algorithm/info/colour_classifier.hpp"
#include "qel/algorithm/info/object_classifier.hpp"
#include "qel/algorithm/video/passthrough/algorithm.hpp"
#include "qel/algorithm/video/registry/publish.hpp"
#include "qel/algorithm/video/registry/register.hpp"

namespace {

namespace info = qel::algorithm::info;
namespace registry = qel::algorithm::video::registry;
namespace model = qel::inference::model;
using qel::configuration::Node;

template <char const* Name>
class Idle final : public qel::algorithm::video::passthrough::Algorithm {
public:
    Idle() : Algorithm(qel::hash::MurmurThree32(Name), {qel::media::ColourFormat::Grey8}) {}
    void Process(qel::media::video::FrameBase<void const> const&, qel::algorithm::video::Result&) override {}
};

std::shared_ptr<info::Base> DescribeFollowed(Node& root) {
    return std::make_shared<info::ObjectClassifier>(root, "followed", "", std::vector<std::string>{"shapes"},
                                                    std::set<std::string>{"person", "car"});
}

std::shared_ptr<info::Base> DescribeColoured(Node& root) {
    return std::make_shared<info::ColourClassifier>(
        root, "coloured", "", info::ColourClassifier::Colours{{"red", {255, 0, 16}}, {"blue", {0, 0, 255}}},
        model::State(model::LoadingStatus::Loaded, model::BuildingStatus::Ended), "2.1");
}

std::shared_ptr<info::Base> DescribeMute(Node&) { throw std::runtime_error("it has no words"); }

std::vector<qel::configuration::Property> const& NoProperties() {
    static std::vector<qel::configuration::Property> const none;
    return none;
}

template <char const* Name>
bool Register(registry::Describe describe) {
    return registry::Register({qel::hash::MurmurThree32(Name), Name,
                               [](qel::inference::backend::Manager&) { return std::make_shared<Idle<Name>>(); },
                               NoProperties, registry::CreateNodes(NoProperties, std::move(describe))});
}

constexpr char FollowedName[] = "test.Followed", ColouredName[] = "test.Coloured", MuteName[] = "test.Mute";

[[maybe_unused]] bool const Registered = Register<FollowedName>(DescribeFollowed) &&
                                         Register<ColouredName>(DescribeColoured) && Register<MuteName>(DescribeMute);

}  // namespace
