#include "onnx_message.hpp"

#include <limits>
#include <stdexcept>

namespace qel::inference {
namespace {

[[noreturn]] void Refuse() { throw std::runtime_error("is no ONNX model, or only a part of one"); }

}  // namespace

bool OnnxMessage::Next(OnnxField& field) {
    if (rest_.empty()) return false;
    std::uint64_t const key = ReadInteger();
    // Keys have 32 bits. Back ends cut longer ones down, and so see another field.
    if (key > std::numeric_limits<std::uint32_t>::max() || key >> 3U == 0) Refuse();
    field = {key >> 3U, static_cast<OnnxWay>(key & 7U)};
    switch (field.way) {
        case OnnxWay::Integer:
            field.integer = ReadInteger();
            return true;
        case OnnxWay::EightBytes:
            field.bytes = Take(8);
            return true;
        case OnnxWay::Bytes:
            field.bytes = Take(ReadInteger());
            return true;
        case OnnxWay::FourBytes:
            field.bytes = Take(4);
            return true;
        default:
            Refuse();
    }
}

std::uint64_t OnnxMessage::ReadInteger() {
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

std::string_view FindText(std::string_view message, std::uint64_t number) {
    std::string_view found;
    OnnxField field;
    for (OnnxMessage reader(message); reader.Next(field);) {
        if (field.IsBytes(number)) found = field.bytes;
    }
    return found;
}

std::uint64_t FindInteger(std::string_view message, std::uint64_t number) {
    std::uint64_t found = 0;
    OnnxField field;
    for (OnnxMessage reader(message); reader.Next(field);) {
        if (field.IsInteger(number)) found = field.integer;
    }
    return found;
}

std::string_view FindMessage(std::string_view message, std::uint64_t number) {
    std::string_view found;
    bool isFound = false;
    OnnxField field;
    for (OnnxMessage reader(message); reader.Next(field);) {
        if (!field.IsBytes(number)) continue;
        if (isFound) throw std::runtime_error("says something twice that an ONNX model says once");
        found = field.bytes;
        isFound = true;
    }
    return found;
}

}  // namespace qel::inference
