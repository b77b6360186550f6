#pragma once

#include <boost/filesystem/path.hpp>

namespace qel::system::plugin {

/// While it lives, a plug-in that ends the process by an exception is named on the standard error output first.
///
/// An exception cannot leave a static initialiser alive: unwinding finds no way through the loader's frames, so the
/// run-time calls std::terminate where it was thrown. All that can be done is to say which file did it.
class TerminateGuard {
public:
    explicit TerminateGuard(boost::filesystem::path const& file);
    TerminateGuard(TerminateGuard const&) = delete;
    TerminateGuard& operator=(TerminateGuard const&) = delete;
    ~TerminateGuard();

private:
    boost::filesystem::path const* outer_;
};

}  // namespace qel::system::plugin
