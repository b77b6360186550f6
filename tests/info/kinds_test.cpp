// What all kinds of descriptors have in common, and the names of types and engines.

#include <stdexcept>
#include <type_traits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "info/tree.hpp"
#include "qel/algorithm/info/attribute_classifier.hpp"
#include "qel/algorithm/info/colour_classifier.hpp"
#include "qel/algorithm/info/feature_generator.hpp"
#include "qel/algorithm/info/frame_classifier.hpp"
#include "qel/algorithm/info/object_classifier.hpp"
#include "qel/algorithm/info/state_classifier.hpp"
#include "qel/algorithm/info/tracker.hpp"
#include "qel/algorithm/tracking_engine.hpp"
#include "qel/type/to_string.hpp"

namespace qel::algorithm::info {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Labels = std::set<std::string>;
using Colours = ColourClassifier::Colours;

template <class Kind, class... Own>
void CheckKind(Type type, std::string const& typeName, std::size_t schemas, Own const&... own) {
    SCOPED_TRACE(typeName);
    static_assert(std::is_convertible_v<Kind*, Base*>);
    auto const root = Map::Make("root");
    Kind const known(*root, "name", "Friendly", own..., Loaded, "2.0");
    Kind const named(*root, "name", "Friendly", Strings{"a", "b"}, own...);
    EXPECT_EQ(known.GetState(), Loaded);
    EXPECT_EQ(known.GetVersion(), "2.0");
    EXPECT_THAT(known.GetModelNames(), IsEmpty());
    EXPECT_EQ(named.GetState(), Unloaded);
    EXPECT_EQ(named.GetVersion(), "");
    EXPECT_THAT(named.GetModelNames(), ElementsAre("a", "b"));
    for (Base const* info : {static_cast<Base const*>(&known), static_cast<Base const*>(&named)}) {
        EXPECT_EQ(&info->GetConfigRoot(), root.get());
        EXPECT_EQ(info->GetName(), "name");
        EXPECT_EQ(info->GetFriendlyName(), "Friendly");
        EXPECT_EQ(info->GetAlgorithmType(), type);
        EXPECT_EQ(info->GetTypename(), typeName);
        ASSERT_EQ(info->GetSchemas().size(), schemas);
        EXPECT_EQ(info->GetSchemas()[0].GetPath(), "typename");
        EXPECT_EQ(info->GetSchemas()[1].GetPath(), "version");
        EXPECT_EQ(info->GetSchemas()[2].GetPath(), "model_status");
        for (auto const& schema : info->GetSchemas()) EXPECT_EQ(schema.GetOptions().GetValue(), 10U);
        auto const map = MakeMap(*info);
        info->Set(*map);
        EXPECT_EQ(configuration::json::Data(*map).substr(0, 16 + typeName.size()),
                  R"({"typename": ")" + typeName + R"(",)");
    }
}

TEST(InfoKinds, TellTheirTypes) {
    CheckKind<ObjectClassifier>(Type(0), "qel.algorithm.type.ObjectClassifier", 4, Labels{"car"});
    CheckKind<AttributeClassifier>(Type(1), "qel.algorithm.type.AttributeClassifier", 4, Labels{"car"});
    CheckKind<StateClassifier>(Type(2), "qel.algorithm.type.StateClassifier", 3);
    CheckKind<FrameClassifier>(Type(3), "qel.algorithm.type.FrameClassifier", 3);
    CheckKind<ColourClassifier>(Type(4), "qel.algorithm.type.ColourClassifier", 3, Colours{{"red", {255, 0, 0}}});
    CheckKind<Tracker>(Type(5), "qel.algorithm.type.Tracker", 4, Labels{"car"});
    CheckKind<FeatureGenerator>(Type(6), "qel.algorithm.type.FeatureGenerator", 3);
}

TEST(InfoKinds, FormOneTree) {
    static_assert(std::is_base_of_v<ClassificationAlgorithm, ObjectClassifier>);
    static_assert(std::is_base_of_v<ClassificationAlgorithm, AttributeClassifier>);
    static_assert(std::is_base_of_v<ClassificationAlgorithm, Tracker>);
    static_assert(std::is_abstract_v<ClassificationAlgorithm>);
    for (bool const isClassification : {std::is_base_of_v<ClassificationAlgorithm, StateClassifier>,
                                        std::is_base_of_v<ClassificationAlgorithm, FrameClassifier>,
                                        std::is_base_of_v<ClassificationAlgorithm, ColourClassifier>,
                                        std::is_base_of_v<ClassificationAlgorithm, FeatureGenerator>}) {
        EXPECT_FALSE(isClassification);
    }
}

TEST(InfoType, HasNoTextPastTheLast) {
    EXPECT_EQ(type::Strings<Type>::GetMap().size(), 7U);
    EXPECT_EQ(type::ToString(Type(5)), "qel.algorithm.type.Tracker");
    EXPECT_EQ(type::ToString(Type(6)), "qel.algorithm.type.FeatureGenerator");
    try {
        type::ToString(Type(7));
        FAIL();
    } catch (std::invalid_argument const& error) {
        EXPECT_STREQ(error.what(),
                     "Cannot convert the enum into its string representation as the value is out of range of the "
                     "string representation map");
    }
}

TEST(TrackingEngine, HasATextForEachEngine) {
    char const* const texts[] = {"object_tracker", "dl_people_tracker", "dl_object_tracker", "dl_skeleton_tracker",
                                 "hand_object",    "shelf_clearing",    "qr_code_tracker",   "dl_fisheye_tracker"};
    for (int i = 0; i < 8; ++i) EXPECT_EQ(type::ToString(TrackingEngine(i)), texts[i]);
    EXPECT_EQ(type::Strings<TrackingEngine>::GetMap().size(), 8U);
    EXPECT_THROW(type::ToString(TrackingEngine(8)), std::invalid_argument);
    EXPECT_EQ(TrackingEngine::DlFisheyeTracker, TrackingEngine(7));
    EXPECT_EQ(TrackingEngine::HandObject, TrackingEngine(4));
}

}  // namespace
}  // namespace qel::algorithm::info
