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

[[noreturn]] void RefusePlace() {
    throw std::runtime_error("has a tensor whose values do not stand where its type has them");
}

/// The field with the raw values.
constexpr std::uint64_t Raw = 9;

/// Where the values of a type stand: raw, or in a list.
struct Places {
    std::size_t rawSize = 0;  ///< bytes of a value; 0 for types that are not written so
    std::uint64_t list = 0;   ///< the number of the field
};

Places PlacesOf(std::uint64_t type) {
    switch (type) {
        case 1:  // 32-bit floats
            return {4, 4};
        case 2:  // unsigned and signed 8 bits, truth values
        case 3:
        case 9:
            return {1, 5};
        case 4:  // 16 bits: unsigned, signed, floats
        case 5:
        case 10:
            return {2, 5};
        case 6:  // 32 bits signed
            return {4, 5};
        case 7:  // 64 bits signed
            return {8, 7};
        case 8:  // texts
            return {0, 6};
        case 11:  // 64-bit floats
            return {8, 10};
        case 12:  // 32 and 64 bits unsigned
            return {4, 11};
        case 13:
            return {8, 11};
        default:
            return {};
    }
}

std::size_t CountNumbers(std::string_view row) {
    std::size_t count = 0;
    for (char const byte : row) count += static_cast<unsigned char>(byte) < 0x80 ? 1U : 0U;
    return count;
}

/// How many values a field of a list holds: a row of them, or one. 0 for one that is written in neither way, which back
/// ends pass over.
std::size_t CountValues(OnnxField const& field) {
    bool const isRow = field.way == OnnxWay::Bytes;
    switch (field.number) {
        case 4:  // floats
            return isRow ? field.bytes.size() / 4 : static_cast<std::size_t>(field.way == OnnxWay::FourBytes);
        case 5:  // 32 bits signed, 64 bits signed, 64 bits unsigned
        case 7:
        case 11:
            return isRow ? CountNumbers(field.bytes) : static_cast<std::size_t>(field.way == OnnxWay::Integer);
        case 6:  // texts
            return static_cast<std::size_t>(isRow);
        case 10:  // 64-bit floats
            return isRow ? field.bytes.size() / 8 : static_cast<std::size_t>(field.way == OnnxWay::EightBytes);
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
    std::uint64_t list = 0;  // which has values
    std::string_view raw;
    std::uint64_t type = 0;
    OnnxField field;
    for (OnnxMessage reader(tensor); reader.Next(field);) {
        if (field.IsBytes(1)) expected.MultiplyRow(field.bytes);
        if (field.IsInteger(1)) expected.Multiply(field.integer);
        if (field.IsInteger(2)) type = field.integer;
        if (field.IsBytes(Raw)) raw = field.bytes;
        if (field.IsInteger(14) && field.integer != 0) throw std::runtime_error("keeps its weights in other files");
        std::size_t const more = CountValues(field);
        if (more == 0) continue;
        if (list != 0 && list != field.number) RefusePlace();
        list = field.number;
        values += more;
    }
    Places const places = PlacesOf(type);
    if (!raw.empty()) {
        if (list != 0 || places.rawSize == 0) RefusePlace();
        if (raw.size() % places.rawSize != 0) Refuse();
        values = raw.size() / places.rawSize;
    } else if (list != 0 && list != places.list) {
        RefusePlace();
    }
    if (values != expected.Get()) Refuse();
}

}  // namespace qel::inference
