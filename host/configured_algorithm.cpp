#include "configured_algorithm.hpp"

#include <exception>
#include <utility>

#include "catalogue.hpp"
#include "error.hpp"
#include "qel/algorithm/video/inplace/algorithm.hpp"
#include "qel/algorithm/video/passthrough/algorithm.hpp"
#include "qel/algorithm/video/registry/get.hpp"

namespace qel::host {
namespace {

namespace video = algorithm::video;

}  // namespace

ConfiguredAlgorithm::ConfiguredAlgorithm(Runtime& runtime, ChainLink link) : map_(std::move(link.map)) {
    try {
        Make(runtime, link.id);
    } catch (std::exception const& error) {
        throw Error("cannot make the algorithm '" + name_ + "': " + error.what());
    }
    Bind();
}

ConfiguredAlgorithm::ConfiguredAlgorithm(Runtime& runtime, hash::MurmurThree32 id) {
    try {
        Make(runtime, id);
    } catch (std::exception const& error) {
        throw Error("cannot make the algorithm '" + name_ + "': " + error.what());
    }
}

ConfiguredAlgorithm::ConfiguredAlgorithm(Runtime& runtime, hash::MurmurThree32 id, std::vector<Setting> const& settings)
    : ConfiguredAlgorithm(runtime, id) {
    Start(settings);
}

void ConfiguredAlgorithm::Start(std::vector<Setting> const& settings) {
    Apply(settings, *map_, "'" + name_ + "'");
    Bind();
}

void ConfiguredAlgorithm::Bind() {
    try {
        // Takes the registry's lock itself, so it must not be held here.
        bindings_ = algorithm_->BindToConfiguration(*map_);
    } catch (std::exception const& error) {
        throw UsageError("the algorithm '" + name_ + "' refuses its configuration: " + error.what());
    }
}

void ConfiguredAlgorithm::Make(Runtime& runtime, hash::MurmurThree32 id) {
    auto const registry = video::registry::Get().GetMap();
    video::registry::Info const& info = registry->at(id);
    name_ = GetShortName(info.GetTypeName());
    if (!map_) map_ = runtime.MakeConfiguration(info);
    algorithm_ = info.GetMake()(runtime.GetManager());
    if (!algorithm_) throw Error("its factory gives nothing");
    algorithm_->SetOfflineModeEnabled(true);
}

ConfiguredAlgorithm::Frame ConfiguredAlgorithm::Process(Frame const& frame, video::Result& result) {
    WorkingFrame working;
    working.Start(frame);
    Process(working, result);
    return working.Get();
}

void ConfiguredAlgorithm::Process(WorkingFrame& frame, video::Result& result) {
    try {
        // The kind is what the algorithm was made as; the class tells how to call it.
        if (auto* const reader = dynamic_cast<video::passthrough::Algorithm*>(algorithm_.get())) {
            return reader->Process(frame.Get(), result);
        }
        if (auto* const writer = dynamic_cast<video::inplace::Algorithm*>(algorithm_.get())) {
            auto pixels = frame.Change();
            return writer->Process(pixels, result);
        }
    } catch (std::exception const& error) {
        throw Error("the algorithm '" + name_ + "' failed: " + error.what());
    }
    throw Error("the algorithm '" + name_ + "' is of a kind that cannot be run");
}

void ConfiguredAlgorithm::Reset() {
    try {
        algorithm_->Reset();
    } catch (std::exception const& error) {
        throw Error("the algorithm '" + name_ + "' cannot be reset: " + error.what());
    }
}

}  // namespace qel::host
