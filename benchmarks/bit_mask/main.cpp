#include <opencv2/core.hpp>

#include "bit_mask/benches.hpp"
#include "support/ratios.hpp"

int main(int argc, char** argv) {
    using namespace qel::benchmarks;
    cv::setNumThreads(1);
    for (Size const size : Sizes) {
        RegisterOperations(size);
        RegisterFloodFill(size);
        RegisterThreshold(size);
    }
    RegisterFillPolygon();
    return RunAndCompare(argc, argv);
}
