// The reader keeps each value in 16 bytes and each name in as many again, once on a stack that grows by half (the old
// and the new one stand beside each other meanwhile) and once in the document, in blocks of 64 KiB or one text each. A
// value or a name is announced by one of the characters counted here. A text takes its length up to five times, while
// it is read and in the document.
#include "memory_guard.hpp"

#include <algorithm>
#include <new>

namespace qel::serialize {

std::size_t EstimateReaderMemory(std::string_view text) noexcept {
    constexpr std::size_t BytesAValue = 96;
    constexpr std::size_t Rest = std::size_t{256} << 10U;
    auto const count =
        std::count_if(text.begin(), text.end(), [](char c) { return c == ',' || c == ':' || c == '[' || c == '{'; });
    return (static_cast<std::size_t>(count) + 1) * BytesAValue + 5 * text.size() + Rest;
}

void CheckReaderMemory(std::string_view text) {
    // As functions: a pair of expressions could be left out by the compiler.
    ::operator delete(::operator new(EstimateReaderMemory(text)));
}

}  // namespace qel::serialize
