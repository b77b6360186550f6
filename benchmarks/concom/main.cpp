#include <opencv2/core.hpp>

#include "concom/benches.hpp"
#include "support/ratios.hpp"

int main(int argc, char** argv) {
    using namespace qel::benchmarks;
    cv::setNumThreads(1);
    for (Size const size : Sizes) {
        RegisterConnectedComponents(size);
        RegisterLineByLine(size);
    }
    return RunAndCompare(argc, argv);
}
