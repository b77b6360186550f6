#include "concom/benches.hpp"
#include "support/ratios.hpp"

int main(int argc, char** argv) {
    using namespace qel::benchmarks;
    return RunProgram(argc, argv, [] {
        for (Size const size : Sizes) {
            RegisterConnectedComponents(size);
            RegisterLineByLine(size);
        }
    });
}
