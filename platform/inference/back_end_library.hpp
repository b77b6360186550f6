#pragma once

#include <boost/filesystem/path.hpp>

#include "back_end.hpp"

namespace qel::inference {

/// The back end, loaded when it is asked for the first time. Throws std::runtime_error with the reason when it cannot
/// be loaded; the next call tries again. Any thread.
BackEnd& GetBackEnd();

/// Where the back end's shared object and the program that tries models out stand: "qel" beside this library.
boost::filesystem::path GetBackEndFolder();

}  // namespace qel::inference
