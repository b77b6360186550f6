// libjpeg reports an error by calling a function that must not return. It leaves by longjmp, over frames of C and of
// Compress alone, which holds nothing that would have to be destroyed; the exception is thrown when all of C is left.
#include "jpeg.hpp"

#include <array>
#include <bit>
#include <csetjmp>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <jpeglib.h>

#include "error.hpp"

namespace qel::serve {
namespace {

static_assert(std::endian::native == std::endian::little, "a word 0xXXRRGGBB lies in memory as B, G, R, X");

struct Failure {
    jpeg_error_mgr manager;
    std::jmp_buf leave;
    std::array<char, JMSG_LENGTH_MAX> text;
};

/// What the encoder holds: freed however it ends.
struct Encoder {
    Encoder() = default;
    Encoder(Encoder const&) = delete;
    Encoder& operator=(Encoder const&) = delete;
    ~Encoder() {
        jpeg_destroy_compress(&state);
        std::free(bytes);
    }

    jpeg_compress_struct state{};
    Failure failure{};
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
};

[[noreturn]] void Leave(j_common_ptr state) {
    auto* const failure = reinterpret_cast<Failure*>(state->err);
    state->err->format_message(state, failure->text.data());
    std::longjmp(failure->leave, 1);
}

void SayNothing(j_common_ptr) {}

/// Returns whether it worked; the reason stands in the encoder otherwise.
bool Compress(Encoder& encoder, host::Picture const& picture, int quality) {
    if (setjmp(encoder.failure.leave) != 0) return false;
    jpeg_compress_struct& state = encoder.state;
    jpeg_create_compress(&state);
    jpeg_mem_dest(&state, &encoder.bytes, &encoder.size);
    state.image_width = picture.size.width;
    state.image_height = picture.size.height;
    state.input_components = 4;
    state.in_color_space = JCS_EXT_BGRX;
    jpeg_set_defaults(&state);
    jpeg_set_quality(&state, quality, TRUE);
    jpeg_start_compress(&state, TRUE);
    while (state.next_scanline < state.image_height) {
        std::size_t const first = static_cast<std::size_t>(state.next_scanline) * picture.size.width;
        // libjpeg takes the row as writable, and only reads it.
        auto* row = reinterpret_cast<JSAMPLE*>(const_cast<std::uint32_t*>(picture.pixels.data() + first));
        jpeg_write_scanlines(&state, &row, 1);
    }
    jpeg_finish_compress(&state);
    return true;
}

}  // namespace

std::vector<std::uint8_t> EncodeJpeg(host::Picture const& picture, int quality) {
    Encoder encoder;
    encoder.state.err = jpeg_std_error(&encoder.failure.manager);
    encoder.failure.manager.error_exit = Leave;
    encoder.failure.manager.output_message = SayNothing;
    if (!Compress(encoder, picture, quality)) {
        throw host::Error("cannot make a JPEG of " + std::to_string(picture.size.width) + " x " +
                          std::to_string(picture.size.height) + " pixels: " + encoder.failure.text.data());
    }
    return {encoder.bytes, encoder.bytes + encoder.size};
}

}  // namespace qel::serve
