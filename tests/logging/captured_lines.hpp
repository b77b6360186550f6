#pragma once

#include <string>
#include <utility>
#include <vector>

#include "qel/logging/configure.hpp"
#include "qel/logging/sink.hpp"

namespace qel::logging {

struct Line {
    Level level;
    std::string name;
    std::string text;

    friend bool operator==(Line const&, Line const&) = default;
};

/// The lines logged while it lives; starts, and leaves, with the thresholds of a fresh process.
class CapturedLines {
public:
    CapturedLines()
        : binding_(BindSink([this](Level level, std::string_view name, std::string_view text) {
              lines_.push_back({level, std::string(name), std::string(text)});
          })) {
        Configure("");
    }
    CapturedLines(CapturedLines const&) = delete;
    CapturedLines& operator=(CapturedLines const&) = delete;
    ~CapturedLines() { Configure(""); }

    std::vector<Line> Take() { return std::exchange(lines_, {}); }

private:
    std::vector<Line> lines_;
    type::Binding binding_;
};

}  // namespace qel::logging
