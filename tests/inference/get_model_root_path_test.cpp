#include "qel/inference/get_model_root_path.hpp"

#include <gtest/gtest.h>

namespace qel::inference {
namespace {

TEST(GetModelRootPath, JoinsTheModelRootAndTheName) {
    EXPECT_EQ(GetModelRootPath("people"), "models/people");
    SetModelRoot("/srv/models");
    EXPECT_EQ(GetModelRootPath("people"), "/srv/models/people");
    SetModelRoot("models");
    EXPECT_EQ(GetModelRootPath("people"), "models/people");
}

}  // namespace
}  // namespace qel::inference
