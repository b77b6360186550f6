#pragma once

#include <atomic>
#include <cstdint>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "qel/property/schema.hpp"

namespace qel::test {

/// Pushes the base away from the start of the owner, so that a cast that forgets it goes wrong.
struct Ballast {
    virtual ~Ballast() = default;
    std::string weight = "heavy";
};

struct Base {
    virtual ~Base() = default;
};

/// An owner of properties that counts the calls of its setters.
class Tank : public Ballast, public Base {
public:
    double GetLevel() const {
        Entry const entry(*this);
        return level_;
    }
    /// Refuses 9, whatever the limits say.
    void SetLevel(double level) {
        ++changes_;
        Entry const entry(*this);
        if (level == 9) throw std::runtime_error("the tank does not like 9");
        level_ = level;
    }
    std::string GetMode() const { return mode_; }
    void SetMode(std::string mode) {
        ++changes_;
        mode_ = std::move(mode);
    }
    std::uint32_t GetChanges() const { return changes_; }
    /// Whether two threads have been in the functions of the level at once.
    bool WasCrowded() const { return crowded_; }

private:
    /// A thread in one of the functions of the level.
    struct Entry {
        explicit Entry(Tank const& entered) : tank(entered) {
            if (tank.visitors_.fetch_add(1) != 0) tank.crowded_ = true;
            std::this_thread::yield();
        }
        Entry(Entry const&) = delete;
        Entry& operator=(Entry const&) = delete;
        ~Entry() { --tank.visitors_; }

        Tank const& tank;
    };

    mutable std::atomic<int> visitors_ = 0;
    mutable std::atomic<bool> crowded_ = false;
    std::atomic<double> level_ = 0;
    std::string mode_;
    std::atomic<std::uint32_t> changes_ = 0;
};

inline property::Schema LevelSchema() {
    return property::MakeSchema<Tank, Base>(&Tank::GetLevel, "level", "how full", 1.0, configuration::Range{0.0, 10.0},
                                            &Tank::SetLevel);
}

inline property::Schema ModeSchema() {
    return property::MakeSchema<Tank, Base>(&Tank::GetMode, "mode", "which way", std::string("slow"),
                                            std::set<std::string>{"fast", "slow"}, &Tank::SetMode);
}

inline property::Schema ChangesSchema() {
    return property::MakeReadOnlySchema<Tank, Base>(&Tank::GetChanges, "changes", "how often");
}

}  // namespace qel::test
