#include "plugin/terminate_guard.hpp"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <mutex>
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

/// Takes no memory: there may be none.
void PrintException(std::exception_ptr const& exception) {
    if (!exception) {
        std::fputs("called std::terminate\n", stderr);
        return;
    }
    try {
        std::rethrow_exception(exception);
    } catch (std::exception const& error) {
        std::fprintf(stderr, "threw an exception: %s\n", error.what());
    } catch (...) {
        std::fputs("threw an exception that is no std::exception\n", stderr);
    }
}

[[noreturn]] void NamePluginAndTerminate() {
    if (loading != nullptr) {
        std::fprintf(stderr, "%s: a static initialiser of this plug-in ", loading->c_str());
        PrintException(std::current_exception());
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
