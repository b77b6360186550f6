#pragma once

#include <stdexcept>
#include <string>

#include <dlfcn.h>

#include "back_end.hpp"

namespace qel::inference {

/// The file name of the back end's shared object.
inline constexpr char const* BackEndFile = "libqel_inference_opencv.so";

/// Loads the shared object, for good. Throws std::runtime_error with the reason.
inline BackEnd& LoadBackEnd(char const* path) {
    void* const library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr)
        throw std::runtime_error(std::string("needs a back end that cannot be loaded: ") + dlerror());
    auto* const get = reinterpret_cast<GetBackEndFunction*>(dlsym(library, GetBackEndName));
    if (get == nullptr) throw std::runtime_error(std::string(path) + " is no back end");
    return *get();
}

}  // namespace qel::inference
