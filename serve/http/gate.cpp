#include "http/gate.hpp"

#include <utility>

#include <boost/asio/post.hpp>

namespace qel::serve::http {

Gate::Gate(boost::asio::any_io_executor executor, std::function<void()> called)
    : executor_(std::move(executor)), called_(std::move(called)) {}

void Gate::Knock() {
    std::lock_guard const lock(mutex_);
    if (!executor_ || isPosted_) return;
    isPosted_ = true;
    boost::asio::post(*executor_, [self = shared_from_this()] {
        {
            std::lock_guard const again(self->mutex_);
            self->isPosted_ = false;
            if (!self->executor_) return;
        }
        self->called_();
    });
}

void Gate::Close() {
    std::lock_guard const lock(mutex_);
    executor_.reset();
}

}  // namespace qel::serve::http
