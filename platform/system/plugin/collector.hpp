#pragma once

#include <utility>
#include <vector>

#include "qel/system/plugin/problem.hpp"

namespace qel::system::plugin {

/// Gathers the problems of one LoadAll; Report reaches the innermost collector of its thread.
class Collector {
public:
    Collector() noexcept;
    Collector(Collector const&) = delete;
    Collector& operator=(Collector const&) = delete;
    ~Collector();

    void Add(Problem problem) { problems_.push_back(std::move(problem)); }
    std::vector<Problem>& GetProblems() noexcept { return problems_; }

private:
    std::vector<Problem> problems_;
    Collector* outer_;
};

}  // namespace qel::system::plugin
