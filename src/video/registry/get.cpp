#include "qel/algorithm/video/registry/get.hpp"

template class qel::type::Registry<qel::algorithm::video::registry::Info>;

namespace qel::algorithm::video::registry {

type::Registry<Info>& Get() {
    static type::Registry<Info> registry;
    return registry;
}

}  // namespace qel::algorithm::video::registry
