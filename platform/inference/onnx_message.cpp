#include "onnx_message.hpp"

#include <stdexcept>

namespace qel::inference {
namespace {

[[noreturn]] void Refuse() { throw std::runtime_error("is no ONNX model, or only a part of one"); }

}  // namespace

bool OnnxMessage::Next(OnnxField& field) {
    if (rest_.empty()) return false;
    std::uint64_t const key = Varint();
    field = {key >> 3U};
    if (field.number == 0) Refuse();
    switch (key & 7U) {
        case 0:
            field.integer = Varint();
            return true;
        case 1:
            Take(8);
            return true;
        case 2:
            field.bytes = Take(Varint());
            field.isBytes = true;
            return true;
        case 5:
            Take(4);
            return true;
        default:
            Refuse();
    }
}

std::uint64_t OnnxMessage::Varint() {
    std::uint64_t value = 0;
    for (unsigned int shift = 0; shift < 64; shift += 7) {
        auto const byte = static_cast<unsigned char>(Take(1)[0]);
        value |= std::uint64_t{byte & 0x7FU} << shift;
        if (byte < 0x80) return value;
    }
    Refuse();
}

std::string_view OnnxMessage::Take(std::uint64_t size) {
    if (size > rest_.size()) Refuse();
    std::string_view const taken = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return taken;
}

std::string_view FindBytes(std::string_view message, std::uint64_t number) {
    std::string_view found;
    OnnxField field;
    for (OnnxMessage reader(message); reader.Next(field);) {
        if (field.isBytes && field.number == number) found = field.bytes;
    }
    return found;
}

std::uint64_t FindInteger(std::string_view message, std::uint64_t number) {
    std::uint64_t found = 0;
    OnnxField field;
    for (OnnxMessage reader(message); reader.Next(field);) {
        if (!field.isBytes && field.number == number) found = field.integer;
    }
    return found;
}

}  // namespace qel::inference
