#pragma once

#include <string>

#include <boost/filesystem/path.hpp>

#include "qel/inference/export.hpp"

namespace qel::inference {

/// The directory of a model's files: the model root / modelName. Any thread.
QEL_INFERENCE_EXPORT boost::filesystem::path GetModelRootPath(std::string const& modelName);

/// Sets the directory that holds the directories of all models, for the whole process; until a host sets one it is
/// "models" in the working directory. Any thread.
QEL_INFERENCE_EXPORT void SetModelRoot(boost::filesystem::path root);

}  // namespace qel::inference
