#include "classifier.hpp"

#include <chrono>
#include <exception>

#include "qel/hash/murmur_three_32.hpp"
#include "qel/logging/logger.hpp"
#include "qel/media/colour_format.hpp"

namespace qel::classifier {
namespace {

using algorithm::video::Object;
using algorithm::video::Result;
using inference::Picture;
using media::ColourFormat;

logging::Logger const log(logging::Name("qel.algorithm.Classifier"));

constexpr std::chrono::minutes LongestWait(5);

}  // namespace

// Nv12 first: it is what decoders give.
Classifier::Classifier(inference::backend::Manager& manager)
    : Algorithm(hash::MurmurThree32(TypeName), {ColourFormat::Nv12, ColourFormat::Rgb24, ColourFormat::Bgr24,
                                                ColourFormat::Yuv24, ColourFormat::Grey8}),
      manager_(manager) {}

void Classifier::Process(media::video::FrameBase<void const> const& frame, Result& result) {
    if (GetOfflineModeEnabled() && !hasWaited_) {
        hasWaited_ = true;
        if (!manager_.WaitUntilSettled(LongestWait)) {
            log.Log(logging::Level::Warning, "Models are still being loaded; the video starts without them");
        }
    }
    Settings const settings = GetSettings();
    boxes_.clear();
    for (Object const& object : result.objects) boxes_.push_back(object.box);
    auto const& pictures = cropper_.Crop(frame, boxes_, settings.margin);
    Classes const* const classes = FindClasses(settings.model);
    if (classes == nullptr) return;
    indices_.clear();
    pictures_.clear();
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        if (pictures[i].width == 0) continue;
        indices_.push_back(i);
        pictures_.push_back(pictures[i]);
    }
    if (pictures_.empty()) return;
    try {
        Label(*classes, settings, result);
    } catch (std::exception const& error) {
        GiveUp(settings.model, error.what());
    }
}

Classes const* Classifier::FindClasses(std::string const& name) {
    auto model = manager_.GetModel(name);
    if (model != model_) {
        classes_.reset();
        model_ = std::move(model);
        try {
            if (model_) classes_.emplace(model_);
        } catch (std::exception const& error) {
            GiveUp(name, error.what());
        }
    }
    return classes_ ? &*classes_ : nullptr;
}

void Classifier::Label(Classes const& classes, Settings const& settings, Result& result) {
    auto const verdicts = classes.Classify(pictures_);
    for (std::size_t i = 0; i < verdicts.size(); ++i) {
        if (!(verdicts[i].confidence >= settings.minimumConfidence)) continue;
        Object& object = result.objects[indices_[i]];
        object.label = classes.GetLabel(verdicts[i]);
        object.confidence = verdicts[i].confidence;
    }
}

void Classifier::GiveUp(std::string const& name, char const* reason) {
    classes_.reset();
    log.Log(logging::Level::Error, "Model %0% cannot classify; objects stay as they are until it changes: %1%", name,
            reason);
}

}  // namespace qel::classifier
