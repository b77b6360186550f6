#pragma once

#include <string>
#include <string_view>

namespace qel::system::plugin {

/// The loader's reason for refusing a file (the text of dlerror) in plain words; a reason that it does not know is
/// quoted as it is. file: the path that the loader was given.
std::string Explain(std::string_view loaderText, std::string_view file);

}  // namespace qel::system::plugin
