#include "plugin/terminate_guard.hpp"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <mutex>
#include <string>
#include <utility>

namespace qel::system::plugin {
namespace {

/// The handler is one for the process: installed with the first guard, put back with the last.
struct Handler {
    std::mutex mutex;
    int guards = 0;
    std::terminate_handler former = nullptr;
};

Handler& GetHandler() {
    static Handler handler;
    return handler;
}

thread_local boost::filesystem::path const* loading = nullptr;

std::string DescribeException(std::exception_ptr const& exception) {
    if (!exception) return "called std::terminate";
    try {
        std::rethrow_exception(exception);
    } catch (std::exception const& error) {
        return std::string("threw an exception: ") + error.what();
    } catch (...) {
        return "threw an exception that is no std::exception";
    }
}

[[noreturn]] void NamePluginAndTerminate() {
    if (loading != nullptr) {
        std::string const what = DescribeException(std::current_exception());
        std::fprintf(stderr, "%s: a static initialiser of this plug-in %s\n", loading->c_str(), what.c_str());
    }
    std::terminate_handler const former = GetHandler().former;
    if (former != nullptr) former();
    std::abort();
}

}  // namespace

TerminateGuard::TerminateGuard(boost::filesystem::path const& file) : outer_(std::exchange(loading, &file)) {
    Handler& handler = GetHandler();
    std::lock_guard<std::mutex> const lock(handler.mutex);
    if (handler.guards++ == 0) handler.former = std::set_terminate(&NamePluginAndTerminate);
}

TerminateGuard::~TerminateGuard() {
    loading = outer_;
    Handler& handler = GetHandler();
    std::lock_guard<std::mutex> const lock(handler.mutex);
    // A plug-in that installed a handler of its own keeps it.
    if (--handler.guards == 0 && std::get_terminate() == &NamePluginAndTerminate) std::set_terminate(handler.former);
}

}  // namespace qel::system::plugin
