#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include <boost/asio/any_io_executor.hpp>

namespace qel::serve::http {

/// Stands between something that lives on an executor and those who wake it, who may do so while it ends or later.
/// Any thread.
class Gate : public std::enable_shared_from_this<Gate> {
public:
    /// called: what a knock calls on the executor. It is kept as long as the gate; it must not keep the gate.
    Gate(boost::asio::any_io_executor executor, std::function<void()> called);

    /// Has it called soon, once for all knocks until then. Nothing happens once the gate is closed.
    void Knock();
    /// No call begins after this. Requires the executor, or that it calls nothing any more; not checked.
    void Close();

private:
    std::mutex mutex_;
    std::optional<boost::asio::any_io_executor> executor_;  // while it is open
    std::function<void()> const called_;
    bool isPosted_ = false;
};

}  // namespace qel::serve::http
