#include "qel/system/plugin/load_error.hpp"

#include <string>
#include <utility>

namespace qel::system::plugin {
namespace {

std::string Describe(std::vector<Problem> const& problems) {
    std::string text;
    for (Problem const& problem : problems) {
        if (!text.empty()) text += '\n';
        text += problem.file.string() + ": " + problem.reason;
    }
    return text;
}

}  // namespace

LoadError::LoadError(std::vector<Problem> problems)
    : std::runtime_error(Describe(problems)),
      problems_(std::make_shared<std::vector<Problem> const>(std::move(problems))) {}

LoadError::LoadError(LoadError const& other) noexcept = default;
LoadError& LoadError::operator=(LoadError const& other) noexcept = default;
LoadError::~LoadError() = default;

}  // namespace qel::system::plugin
