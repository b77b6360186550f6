#include "qel/algorithm/video/registry/register.hpp"

#include <string>
#include <utility>

#include "qel/algorithm/video/registry/get.hpp"
#include "qel/system/plugin/find_file.hpp"
#include "qel/system/plugin/report.hpp"

namespace qel::algorithm::video::registry {

namespace {

std::string Quote(char const* text) { return text ? '"' + std::string(text) + '"' : "an algorithm without a name"; }

}  // namespace

bool Register(Info info) {
    using system::plugin::FindFile;
    hash::MurmurThree32 const id = info.GetTypeNameId();
    char const* const name = info.GetTypeName();
    if (Get().Register(id, std::move(info))) return true;
    // The text of a type name is part of its plug-in, so its address tells the file.
    char const* const first = Get().GetMap()->at(id).GetTypeName();
    system::plugin::Report({FindFile(name), "does not register " + Quote(name) + ": its identifier is taken by " +
                                                Quote(first) + " of " + FindFile(first).string()});
    return false;
}

}  // namespace qel::algorithm::video::registry
