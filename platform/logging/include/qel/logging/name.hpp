#pragma once

#include <string>
#include <string_view>

namespace qel::logging {

/// The dotted name of a logger, such as "qel.algorithm.InfoBuilder"; thresholds are set for it or for what it begins
/// with. Constant: any thread.
class Name {
public:
    explicit Name(std::string_view text) : text_(text) {}

    std::string const& GetText() const noexcept { return text_; }

    friend bool operator==(Name const&, Name const&) = default;

private:
    std::string text_;
};

}  // namespace qel::logging
