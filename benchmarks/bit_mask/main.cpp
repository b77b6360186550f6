#include "bit_mask/benches.hpp"
#include "support/ratios.hpp"

int main(int argc, char** argv) {
    using namespace qel::benchmarks;
    return RunProgram(argc, argv, [] {
        for (Size const size : Sizes) {
            RegisterOperations(size);
            RegisterFloodFill(size);
            RegisterThreshold(size);
        }
        RegisterFillPolygon();
    });
}
