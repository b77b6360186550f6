#pragma once

#include <memory>
#include <vector>

#include "qel/algorithm/export.hpp"
#include "qel/algorithm/video/type.hpp"
#include "qel/configuration/node/map.hpp"
#include "qel/hash/murmur_three_32.hpp"
#include "qel/media/colour_format.hpp"
#include "qel/type/binding.hpp"

namespace qel::algorithm::video {

namespace inplace {
class Algorithm;
}
namespace passthrough {
class Algorithm;
}

/// What the framework knows of a video algorithm: the identifier of its type name, its type, the colour formats of the
/// frames that it accepts, and whether it runs in offline mode.
///
/// Concrete algorithms derive from inplace::Algorithm or passthrough::Algorithm. One thread at a time. A moved-from
/// object may be destroyed, move-assigned, swapped, compared and asked GetTypeNameId and Is; nothing else.
class QEL_ALGORITHM_EXPORT Algorithm {
public:
    /// formats: what the algorithm accepts, in order of preference. Throws std::out_of_range for a type of 64 or more.
    Algorithm(hash::MurmurThree32 typeNameId, Type type, std::vector<media::ColourFormat> formats);
    /// Copies all but the offline mode: a copy starts online. Throws std::logic_error for a moved-from source.
    Algorithm(Algorithm const& other);
    Algorithm(Algorithm&& other) noexcept;
    /// Copies all but the offline mode, which stays what it was. Throws std::logic_error when either is moved-from.
    Algorithm& operator=(Algorithm const& other);
    Algorithm& operator=(Algorithm&& other) noexcept;
    virtual ~Algorithm();

    /// Returns to the state before the first frame; settings stay. Does nothing unless a concrete algorithm overrides.
    virtual void Reset();

    /// Binds each property that the algorithm's registry entry declares to the node of that name in map, so that the
    /// setter is called on this algorithm: once now, with the current value, and whenever the node fires.
    ///
    /// Returns one binding a property, in the entry's order; it is empty where map has no such node or the property no
    /// setter. Drop the bindings before the algorithm. The registry is locked meanwhile: a setter must not use it.
    /// Throws std::out_of_range when the registry has no entry; what a setter throws passes through.
    virtual std::vector<type::Binding> BindToConfiguration(configuration::node::Map& map);

    /// The identifier of the type name; 0 for a moved-from object.
    hash::MurmurThree32 GetTypeNameId() const noexcept;
    /// Throws std::logic_error for a moved-from object.
    std::vector<media::ColourFormat> const& GetSupportedColourFormats() const;

    /// Offline mode: frames come from a recording as fast as they can be processed. Requires an object that is not
    /// moved-from; not checked.
    bool GetOfflineModeEnabled() const noexcept;
    void SetOfflineModeEnabled(bool enabled) noexcept;

    /// Whether the algorithm was made with the type of Kind (inplace::Algorithm or passthrough::Algorithm), whatever
    /// class it really is; false for a moved-from object.
    template <class Kind>
    bool Is() const noexcept;

    /// Whether identifier, type and colour formats (in their order) are equal; the offline mode is not compared.
    bool operator==(Algorithm const& other) const noexcept;

    friend void swap(Algorithm& left, Algorithm& right) noexcept { left.impl_.swap(right.impl_); }

private:
    struct Impl;

    Impl const& Get() const;

    std::unique_ptr<Impl> impl_;
};

void swap(Algorithm& left, Algorithm& right) noexcept;

template <>
QEL_ALGORITHM_EXPORT bool Algorithm::Is<inplace::Algorithm>() const noexcept;
template <>
QEL_ALGORITHM_EXPORT bool Algorithm::Is<passthrough::Algorithm>() const noexcept;

}  // namespace qel::algorithm::video
