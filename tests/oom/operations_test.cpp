// Every operation of the library's public headers with each of its allocations failed: once, and from then on for good.
// A line "points" for each tells how many there were.

#include <algorithm>
#include <cctype>
#include <iostream>
#include <iterator>
#include <ostream>

#include <gtest/gtest.h>

#include "oom/sweep.hpp"

namespace qel::oom {

void PrintTo(Operation const& operation, std::ostream* stream) { *stream << operation.name; }

namespace {

Operations AllOperations() {
    Operations all;
    for (auto const& list : {PlatformOperations, ConfigurationOperations, JsonOperations, PropertyOperations,
                             ImageOperations, InfoOperations, InferenceOperations, VideoOperations}) {
        auto operations = list();
        std::move(operations.begin(), operations.end(), std::back_inserter(all));
    }
    return all;
}

std::string NameOf(testing::TestParamInfo<Operation> const& info) {
    std::string name = info.param.name;
    std::replace_if(
        name.begin(), name.end(), [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; }, '_');
    return name;
}

extern "C" __attribute__((visibility("default"))) char const* __lsan_default_suppressions();

// OpenCV takes the pixels of a matrix before what is to own them.
extern "C" char const* __lsan_default_suppressions() { return "leak:cv::Mat::create\n"; }

class OutOfMemory : public testing::TestWithParam<Operation> {};

TEST_P(OutOfMemory, IsToldAndLeavesThingsWhole) {
    Points const points = Sweep(GetParam());
    std::cout << "points " << points.once << ' ' << points.forGood << ' ' << GetParam().name << std::endl;
}

INSTANTIATE_TEST_SUITE_P(All, OutOfMemory, testing::ValuesIn(AllOperations()), NameOf);

}  // namespace
}  // namespace qel::oom
