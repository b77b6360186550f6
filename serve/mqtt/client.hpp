#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "mqtt/broker_address.hpp"

namespace qel::serve::mqtt {

/// A connection to a broker (MQTT 5) that goes and comes back, and the messages on their way through it. Never waits:
/// whoever owns it polls its descriptor and lets it serve. The broker's name is looked up on a thread of its own, which
/// is left to itself when the client goes meanwhile. One thread.
class Client {
public:
    /// What happens while the client serves. None of these functions may call the client.
    class Listener {
    public:
        virtual ~Listener() = default;
        /// resumed: the broker knows of the session, so messages on their way are completed; otherwise it does not
        /// know how far they came.
        virtual void OnConnected(bool resumed) = 0;
        /// A message is completed, or refused where the reason is not empty.
        virtual void OnCompleted(int id, std::string const& refusal) = 0;
        /// The connection is gone, or did not come about.
        virtual void OnClosed(std::string const& reason) = 0;
    };

    enum class Session {
        Fresh,  ///< what the broker knows of the client is forgotten, and again when the connection ends
        Kept    ///< lives on for a day without a connection
    };

    /// What the broker says for the client when it goes without a word.
    struct Will {
        std::string topic{};
        std::string payload{};
    };

    struct Message {
        std::string topic{};
        std::string_view payload{};
        /// 1 or 2.
        int quality = 2;
        bool retain = false;
        std::vector<std::pair<std::string, std::string>> properties{};
    };

    /// name: of the session at the broker. will: without a topic none. listener: outlives the client.
    Client(BrokerAddress const& address, std::string const& name, Session session, Will const& will,
           Listener& listener);
    Client(Client const&) = delete;
    Client& operator=(Client const&) = delete;
    ~Client();

    /// Begins to connect, for the first time or again; OnConnected or OnClosed follows.
    void Open();
    /// Tells the broker that the client goes.
    void Disconnect();
    /// Sends a message; OnCompleted will tell of it, after a new connection if need be. id: set to what it will tell.
    /// Returns why the message cannot be sent; empty when it is on its way.
    std::string Publish(Message const& message, int& id);

    bool IsConnected() const;
    /// The descriptor to be polled: the connection's, or one that tells that the look-up has ended; -1 without one.
    int GetDescriptor() const;
    bool WantsToWrite() const;
    /// Whether the broker's name is still being looked up, since this call of Open or an earlier one.
    bool IsLookingUp() const;
    /// Reads and writes what is there, and sees to what time brings; call it every second at least.
    void Serve(bool readable, bool writable);

private:
    struct Impl;

    /// Begins to try the addresses that are left.
    void Dial();
    /// Takes over from the thread that has done so.
    void TakeOver();

    // Shared with that thread.
    std::shared_ptr<Impl> impl_;
    std::thread dialler_{};
};

}  // namespace qel::serve::mqtt
