#pragma once

#include <cstdlib>
#include <functional>
#include <thread>
#include <vector>

namespace qel::test {

/// How often a thread repeats its work; QEL_THREADS_ROUNDS in the environment multiplies the number.
inline int Rounds(int usual) {
    char const* const factor = std::getenv("QEL_THREADS_ROUNDS");
    return factor != nullptr ? usual * std::atoi(factor) : usual;
}

/// Runs the actions on a thread each and waits for all.
inline void RunTogether(std::vector<std::function<void()>> const& actions) {
    std::vector<std::thread> threads;
    threads.reserve(actions.size());
    for (auto const& action : actions) threads.emplace_back(action);
    for (std::thread& thread : threads) thread.join();
}

}  // namespace qel::test
