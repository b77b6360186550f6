// Writes a video that scripts play: a bright square that moves over grey.
//
// usage: qel_test_video FILE.mkv

#include <cstdio>
#include <exception>

#include "support/test_video.hpp"

int main(int count, char** arguments) {
    if (count != 2) {
        std::fputs("usage: qel_test_video FILE.mkv\n", stderr);
        return 2;
    }
    try {
        qel::test::WriteMovingSquare(arguments[1], {.width = 160, .height = 120, .frames = 60, .framesPerSecond = 20});
    } catch (std::exception const& error) {
        std::fprintf(stderr, "qel_test_video: %s\n", error.what());
        return 1;
    }
    return 0;
}
