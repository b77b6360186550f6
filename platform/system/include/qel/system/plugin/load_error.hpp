#pragma once

#include <memory>
#include <stdexcept>
#include <vector>

#include "qel/system/export.hpp"
#include "qel/system/plugin/problem.hpp"

namespace qel::system::plugin {

/// Some plug-ins were not loaded, or reported a problem meanwhile; what() holds a line for each one. Any thread.
class QEL_SYSTEM_EXPORT LoadError : public std::runtime_error {
public:
    explicit LoadError(std::vector<Problem> problems);
    LoadError(LoadError const& other) noexcept;
    LoadError& operator=(LoadError const& other) noexcept;
    ~LoadError() override;

    /// The problems, in the order in which they were met.
    std::vector<Problem> const& GetProblems() const noexcept { return *problems_; }

private:
    std::shared_ptr<std::vector<Problem> const> problems_;  // shared: copying an exception must not throw
};

}  // namespace qel::system::plugin
