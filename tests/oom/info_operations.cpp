// Descriptors of algorithms, their publication, and the states of models.
#include <array>
#include <concepts>
#include <memory>
#include <new>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "info/publishing.hpp"
#include "oom/sweep.hpp"
#include "qel/algorithm/info/attribute_classifier.hpp"
#include "qel/algorithm/info/colour_classifier.hpp"
#include "qel/algorithm/info/feature_generator.hpp"
#include "qel/algorithm/info/frame_classifier.hpp"
#include "qel/algorithm/info/object_classifier.hpp"
#include "qel/algorithm/info/state_classifier.hpp"
#include "qel/algorithm/info/tracker.hpp"
#include "qel/algorithm/tracking_engine.hpp"
#include "qel/type/to_string.hpp"

namespace qel::oom {
namespace {

using namespace algorithm;
using inference::backend::Manager;

constexpr char Long[] = "a text that is too long to be kept without an allocation";

class ReportingManager : public Manager {
public:
    using Manager::ReportModelState;
};

struct Tree {
    std::shared_ptr<Map> root = Map::Make("root");
    std::shared_ptr<Map> map{};
    std::string text{};
};

std::string TextOf(Tree const& tree) {
    return tree.text + configuration::json::Data(*tree.root) + (tree.map ? configuration::json::Data(*tree.map) : "");
}

std::set<std::string> const Labels{Long, "person", "another label that needs memory"};

template <class Kind>
std::shared_ptr<info::Base> Describe(Map& root, bool withModels) {
    std::vector<std::string> const models{"a model with a name that needs memory", "b"};
    if constexpr (std::derived_from<Kind, info::ClassificationAlgorithm>) {
        if (withModels) return std::make_shared<Kind>(root, "name", Long, models, Labels);
        return std::make_shared<Kind>(root, "name", Long, Labels, Loaded, Long);
    } else {
        if (withModels) return std::make_shared<Kind>(root, "name", Long, models);
        return std::make_shared<Kind>(root, "name", Long, Loaded, Long);
    }
}

template <>
std::shared_ptr<info::Base> Describe<info::ColourClassifier>(Map& root, bool withModels) {
    info::ColourClassifier::Colours const colours{{Long, {1, 2, 3}}, {"red", {255, 0, 0}}};
    std::vector<std::string> const models{"a model with a name that needs memory", "b"};
    if (withModels) return std::make_shared<info::ColourClassifier>(root, "name", Long, models, colours);
    return std::make_shared<info::ColourClassifier>(root, "name", Long, colours, Loaded, Long);
}

/// Makes descriptors of a kind and has them describe themselves.
template <class Kind>
Operation OfKind(std::string name) {
    return MakeOperation(
        "info/" + name, Promise::Basic, [] { return Tree(); },
        [](Tree& tree) {
            auto const withModels = Describe<Kind>(*tree.root, true);
            auto const info = Describe<Kind>(*tree.root, false);
            tree.map = Map::Make("map");
            tree.map->Schema(info->GetSchemas());
            info->Set(*tree.map);
            // GetTypename may not throw.
            tree.text = type::ToString(withModels->GetAlgorithmType());
        },
        [](Tree const& tree) { return TextOf(tree); });
}

/// A tree in which descriptors are published, with the files of their models.
struct Publishing {
    ModelRoot models{};
    std::shared_ptr<Map> root = Map::Make("root");
    ReportingManager manager{};
    LoggedLines lines{};
    std::string text{};

    Publishing() {
        models.WriteMetadata("a model with a name that needs memory", R"({"max_batch_size": 1,
        "version": "a version that is too long to be kept without an allocation"})");
    }
};

std::string PublishingText(std::unique_ptr<Publishing> const& s) {
    return s->text + configuration::json::Data(*s->root);
}

template <class Act>
Operation OnPublishing(std::string name, Promise promise, Act act) {
    return MakeOperation(
        "info/" + name, promise, [] { return std::make_unique<Publishing>(); },
        [act](std::unique_ptr<Publishing>& s) { act(*s); }, PublishingText);
}

Operations PublishingOperations() {
    auto const publish = [](Publishing& s) {
        InfoBuilder::Register(s.manager, Describe<info::Tracker>(*s.root, true));
    };
    return {
        // "algorithms.info" may have been made; the algorithm's map is there as a whole or not at all.
        OnPublishing("Register", Promise::Basic, publish),
        OnPublishing(
            "RegisterWithoutModels", Promise::Basic,
            [](Publishing& s) { InfoBuilder::Register(s.manager, Describe<info::ColourClassifier>(*s.root, false)); }),
        OnPublishing("RegisterRefused", Promise::Basic,
                     [](Publishing& s) {
                         s.text = Caught<std::invalid_argument>([&] { InfoBuilder::Register(s.manager, nullptr); });
                     }),
        MakeOperation(
            // A callback that fails is logged by the manager; what the node has missed comes with the next change.
            "info/FollowModels", Promise::Silent,
            [publish] {
                auto s = std::make_unique<Publishing>();
                publish(*s);
                return s;
            },
            [](std::unique_ptr<Publishing>& s) {
                for (State const& state : {Built, Loaded, Building}) {
                    try {
                        s->manager.ReportModelState("b", state);
                    } catch (std::bad_alloc const&) {}
                }
            },
            PublishingText),
        OnPublishing("CombinedState", Promise::Strong,
                     [](Publishing& s) {
                         std::array<State, 2> const states{Loaded, Building};
                         s.text = inference::model::ToString(InfoBuilder::GetCombinedState(states));
                     }),
    };
}

/// Counts the calls of its callbacks.
struct Followed {
    ReportingManager manager{};
    std::shared_ptr<std::vector<State>> states = std::make_shared<std::vector<State>>();

    Followed() { states->reserve(10); }
    void Follow() {
        manager.RegisterModelUpdateCallback("a model with a name that needs memory",
                                            [states = states](State state) { states->push_back(state); });
    }
    void Report(State state) { manager.ReportModelState("a model with a name that needs memory", state); }
};

std::string FollowedText(std::unique_ptr<Followed> const& s) {
    std::string text;
    for (State const& state : *s->states) text += inference::model::ToString(state) + " ";
    return text;
}

Operations ManagerOperations() {
    return {
        MakeOperation(
            "inference/RegisterModelUpdateCallback", Promise::Strong, [] { return std::make_unique<Followed>(); },
            [](std::unique_ptr<Followed>& s) { s->Follow(); }, FollowedText),
        MakeOperation(
            "inference/RegisterWhenThereIsAState", Promise::Strong,
            [] {
                auto s = std::make_unique<Followed>();
                s->Report(Building);
                return s;
            },
            [](std::unique_ptr<Followed>& s) { s->Follow(); },
            [](std::unique_ptr<Followed> const& s) {
                // Who is registered is told every change.
                auto const told = *s->states;
                s->Report(Loaded);
                s->Report(Building);
                std::string const text = FollowedText(s);
                *s->states = told;
                s->states->reserve(10);
                return text;
            }),
        MakeOperation(
            "inference/ReportModelState", Promise::Strong,
            [] {
                auto s = std::make_unique<Followed>();
                s->Follow();
                return s;
            },
            [](std::unique_ptr<Followed>& s) { s->Report(Loaded); }, FollowedText),
        MakeOperation(
            "inference/Paths", Promise::Strong, [] { return std::string(); },
            [](std::string& text) {
                std::string made = inference::GetModelRootPath("a model with a name that needs memory").string();
                inference::SetModelRoot("a folder with a name that needs memory");
                inference::SetModelRoot("models");
                text = made;
            },
            [](std::string const& text) { return text; }),
        MakeOperation(
            "inference/StateTexts", Promise::Strong, [] { return std::string(); },
            [](std::string& text) {
                text = Caught<std::invalid_argument>([] { ToString(MakeState(7, 7)); }) +
                       inference::model::ToString(Building) + *State::GetAvailableStates().begin();
            },
            [](std::string const& text) { return text; }),
        MakeOperation(
            "info/EnumerationTexts", Promise::Strong, [] { return std::string(); },
            [](std::string& text) {
                text = type::ToString(info::Type::Tracker) + type::ToString(TrackingEngine{}) +
                       Caught<std::invalid_argument>([] { type::ToString(static_cast<info::Type>(99)); });
            },
            [](std::string const& text) { return text; }),
    };
}

}  // namespace

Operations InfoOperations() {
    Operations all{
        OfKind<info::ObjectClassifier>("ObjectClassifier"), OfKind<info::AttributeClassifier>("AttributeClassifier"),
        OfKind<info::StateClassifier>("StateClassifier"),   OfKind<info::FrameClassifier>("FrameClassifier"),
        OfKind<info::ColourClassifier>("ColourClassifier"), OfKind<info::Tracker>("Tracker"),
        OfKind<info::FeatureGenerator>("FeatureGenerator"),
    };
    for (auto const& list : {PublishingOperations, ManagerOperations}) {
        for (Operation& operation : list()) all.push_back(std::move(operation));
    }
    return all;
}

}  // namespace qel::oom
