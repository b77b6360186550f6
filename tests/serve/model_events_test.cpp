#include "model_events.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qel/configuration/node/primitive.hpp"
#include "serve/listener.hpp"

namespace qel::serve {
namespace {

using configuration::node::Map;
using configuration::node::Primitive;
using testing::ElementsAre;

TEST(ModelEvents, TellWhatIsPublishedAndWhatChangesFromThenOn) {
    auto const descriptors = Map::Make("info");
    auto const known = Map::Make("motion");
    known->Insert(Primitive<std::string>::Make("model_status", "", "loading"));
    descriptors->Insert(known);
    EventBus bus;
    test::Listener const listener(bus);
    {
        ModelEvents const events(*descriptors, bus);
        known->Set("model_status", "loaded");
        auto const fresh = Map::Make("classifier");
        fresh->Insert(Primitive<std::string>::Make("model_status", "", "failed"));
        descriptors->Insert(fresh);
        EXPECT_TRUE(test::Happens([&] { return listener.Get("model").size() == 2; }));
    }
    known->Set("model_status", "failed");
    EXPECT_THAT(listener.Get("model"), ElementsAre(R"({"path":"motion.model_status","value":"loaded"})",
                                                   R"({"path":"classifier","value":{"model_status":"failed"}})"));
}

}  // namespace
}  // namespace qel::serve
