#include "onnx_tensor.hpp"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>

#include "onnx_message.hpp"

namespace qel::inference {
namespace {

[[noreturn]] void Refuse() {
    throw std::runtime_error("has a tensor with another number of values than its sizes say");
}

/// Bytes of a value that is written raw; 0 for types that are not written so.
std::size_t SizeOfType(std::uint64_t type) {
    switch (type) {
        case 2:  // unsigned and signed 8 bits, truth values
        case 3:
        case 9:
            return 1;
        case 4:  // 16 bits: unsigned, signed, floats
        case 5:
        case 10:
            return 2;
        case 1:  // 32 bits: floats, signed, unsigned
        case 6:
        case 12:
            return 4;
        case 7:  // 64 bits: signed, floats, unsigned
        case 11:
        case 13:
            return 8;
        default:
            return 0;
    }
}

std::size_t CountNumbers(std::string_view row) {
    std::size_t count = 0;
    for (char const byte : row) count += static_cast<unsigned char>(byte) < 0x80 ? 1U : 0U;
    return count;
}

/// How many values a field of a tensor holds. The lists may be written as rows or number by number.
std::size_t CountValues(OnnxField const& field) {
    switch (field.number) {
        case 4:  // floats
            return field.isBytes ? field.bytes.size() / 4 : 1;
        case 5:  // 32 bits signed, 64 bits signed, 64 bits unsigned
        case 7:
        case 11:
            return field.isBytes ? CountNumbers(field.bytes) : 1;
        case 6:  // texts
            return 1;
        case 10:  // 64-bit floats
            return field.isBytes ? field.bytes.size() / 8 : 1;
        default:
            return 0;
    }
}

/// The product of sizes that stand one by one or in a row.
class Product {
public:
    void Multiply(std::uint64_t size) {
        // Half of all numbers: that of the bytes must be countable as well.
        if (size != 0 && value_ > std::numeric_limits<std::uint32_t>::max() / size) Refuse();
        value_ *= size;
    }
    void MultiplyRow(std::string_view row) {
        while (!row.empty()) {
            std::uint64_t size = 0;
            std::size_t length = 0;
            unsigned char byte = 0x80;
            while (byte >= 0x80) {
                if (length == row.size() || length == 5) Refuse();
                byte = static_cast<unsigned char>(row[length]);
                size |= std::uint64_t{byte & 0x7FU} << (7 * length++);
            }
            Multiply(size);
            row.remove_prefix(length);
        }
    }
    std::uint64_t Get() const { return value_; }

private:
    std::uint64_t value_ = 1;
};

}  // namespace

void CheckOnnxTensor(std::string_view tensor) {
    Product expected;
    std::size_t values = 0;
    std::string_view raw;
    std::uint64_t type = 0;
    OnnxField field;
    for (OnnxMessage reader(tensor); reader.Next(field);) {
        if (field.number == 1 && field.isBytes) expected.MultiplyRow(field.bytes);
        if (field.number == 1 && !field.isBytes) expected.Multiply(field.integer);
        if (field.number == 2) type = field.integer;
        if (field.number == 9) raw = field.bytes;
        if (field.number == 14 && field.integer != 0) throw std::runtime_error("keeps its weights in other files");
        values += CountValues(field);
    }
    if (!raw.empty()) {
        std::size_t const size = SizeOfType(type);
        if (size == 0 || raw.size() % size != 0) Refuse();
        values = raw.size() / size;
    }
    if (values != expected.Get()) Refuse();
}

}  // namespace qel::inference
