#include "qel/media/video/frame/rotation.hpp"

qel::type::StringMap const& qel::type::Strings<qel::media::video::frame::Rotation>::GetMap() {
    static StringMap const map = {{0, "none"}, {1, "clockwise_90"}, {2, "clockwise_180"}, {3, "clockwise_270"}};
    return map;
}
