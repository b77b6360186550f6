#include "watcher.hpp"

#include <algorithm>

#include "support/temporary_directory.hpp"

namespace qel::test {

Watcher::Condition HasLines(std::string const& path, std::size_t count) {
    return [=](std::string const&) {
        std::string const text = ReadFile(path);
        return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) >= count;
    };
}

Watcher::Condition HasText(std::string const& path, std::string const& text) {
    return [=](std::string const&) { return ReadFile(path).find(text) != std::string::npos; };
}

Watcher::Condition HasSaid(std::string const& text, std::size_t times) {
    return [=](std::string const& error) {
        std::size_t found = 0;
        for (std::size_t at = error.find(text); at != std::string::npos; at = error.find(text, at + 1)) ++found;
        return found >= times;
    };
}

}  // namespace qel::test
