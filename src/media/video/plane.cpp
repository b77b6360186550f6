#include "qel/media/video/frame/plane.hpp"

#include <ostream>

namespace qel::media::video::frame {

template <class T>
std::ostream& operator<<(std::ostream& stream, PlaneBase<T> const& plane) {
    return stream << "{\"size\":" << plane.GetSize() << ",\"buffer\":\"" << plane.GetBuffer()
                  << ",\"stride\":" << plane.GetStride() << '}';
}

template class PlaneBase<void>;
template class PlaneBase<void const>;
template void swap(PlaneBase<void>&, PlaneBase<void>&) noexcept;
template void swap(PlaneBase<void const>&, PlaneBase<void const>&) noexcept;
template std::ostream& operator<<(std::ostream&, PlaneBase<void> const&);
template std::ostream& operator<<(std::ostream&, PlaneBase<void const> const&);

}  // namespace qel::media::video::frame
