#pragma once

#include <mutex>
#include <string>
#include <utility>

#include "qel/algorithm/video/registry/property.hpp"
#include "qel/configuration/property.hpp"

namespace qel::plugin {

/// The settings of an algorithm, which inherits from this. Any thread may change them while the algorithm takes a copy
/// for each frame: a change holds from the next frame on.
template <class Settings>
class Tunable {
public:
    Settings GetSettings() const {
        std::lock_guard<std::mutex> const lock(mutex_);
        return settings_;
    }
    /// change: called with the settings, under their lock. What it throws is passed on.
    template <class Change>
    void ChangeSettings(Change change) {
        std::lock_guard<std::mutex> const lock(mutex_);
        change(settings_);
    }

protected:
    ~Tunable() = default;

private:
    mutable std::mutex mutex_;
    Settings settings_;
};

/// The property of a Tunable algorithm that is one field of its settings, with the field's default.
template <class Algorithm, class Settings, class T>
configuration::Property MakeSetting(std::string name, std::string description, configuration::Range<T> range,
                                    T Settings::*field) {
    return algorithm::video::registry::MakeProperty<Algorithm>(
        std::move(name), std::move(description), Settings().*field, range, [field](Algorithm& algorithm, T value) {
            algorithm.ChangeSettings([&](Settings& settings) { settings.*field = value; });
        });
}

}  // namespace qel::plugin
