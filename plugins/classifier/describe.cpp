#include <exception>
#include <set>
#include <string>
#include <vector>

#include <boost/filesystem/operations.hpp>

#include "classifier.hpp"
#include "qel/algorithm/info/object_classifier.hpp"
#include "qel/inference/get_model_root_path.hpp"
#include "qel/inference/load_labels.hpp"
#include "qel/logging/logger.hpp"

namespace qel::classifier {
namespace {

logging::Logger const log(logging::Name("qel.algorithm.Classifier"));

std::set<std::string> ReadLabels() {
    auto const path = inference::GetModelRootPath(DefaultModel) / "onnx" / "labels.txt";
    boost::system::error_code error;
    if (boost::filesystem::status(path, error).type() == boost::filesystem::file_not_found) return {};
    try {
        auto const labels = inference::LoadLabels(path);
        return {labels.begin(), labels.end()};
    } catch (std::exception const& failure) {
        log.Log(logging::Level::Warning, "The descriptor lists no classes: %0%", failure.what());
        return {};
    }
}

}  // namespace

std::shared_ptr<algorithm::info::Base> Describe(configuration::Node& root) {
    return std::make_shared<algorithm::info::ObjectClassifier>(root, "classifier", "Classifier",
                                                               std::vector<std::string>{DefaultModel}, ReadLabels());
}

}  // namespace qel::classifier
