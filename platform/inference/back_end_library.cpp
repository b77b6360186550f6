#include "back_end_library.hpp"

#include "load_back_end.hpp"
#include "qel/system/plugin/find_file.hpp"

namespace qel::inference {

boost::filesystem::path GetBackEndFolder() {
    static char const here = 0;
    return system::plugin::FindFile(&here).parent_path() / "qel";
}

BackEnd& GetBackEnd() {
    static BackEnd& backEnd = LoadBackEnd((GetBackEndFolder() / BackEndFile).c_str());
    return backEnd;
}

}  // namespace qel::inference
