#include "algorithm_chain.hpp"

#include <algorithm>
#include <memory>
#include <string>

#include "error.hpp"
#include "text.hpp"

namespace qel::host {

AlgorithmChain::AlgorithmChain(Runtime& runtime, std::vector<hash::MurmurThree32> const& ids,
                               std::vector<Setting> const& settings) {
    for (hash::MurmurThree32 const id : ids) {
        algorithms_.push_back(std::make_unique<ConfiguredAlgorithm>(runtime, id));
        if (std::count(ids.begin(), ids.end(), id) > 1) {
            throw UsageError("the algorithm '" + algorithms_.back()->GetName() + "' is named twice");
        }
    }
    Start(settings);
    FindColourFormats();
}

AlgorithmChain::AlgorithmChain(Runtime& runtime, std::vector<ChainLink> const& links) {
    if (links.empty()) throw UsageError("no algorithm is named");
    for (ChainLink const& link : links) {
        algorithms_.push_back(std::make_unique<ConfiguredAlgorithm>(runtime, link));
        if (std::count_if(links.begin(), links.end(), [&](auto const& other) { return other.id == link.id; }) > 1) {
            throw UsageError("the algorithm '" + algorithms_.back()->GetName() + "' is named twice");
        }
    }
    FindColourFormats();
}

void AlgorithmChain::Start(std::vector<Setting> const& settings) {
    std::vector<std::vector<Setting>> own(algorithms_.size());
    for (Setting setting : settings) {
        std::size_t const owner = FindOwner(setting);
        own[owner].push_back(std::move(setting));
    }
    for (std::size_t i = 0; i < algorithms_.size(); ++i) algorithms_[i]->Start(own[i]);
}

/// The algorithm that a setting is for; its name is taken off the setting's.
std::size_t AlgorithmChain::FindOwner(Setting& setting) const {
    std::size_t const point = setting.name.find('.');
    std::string const prefix = setting.name.substr(0, point);
    std::vector<std::size_t> owners;
    std::vector<std::string> meanings;
    for (std::size_t i = 0; i < algorithms_.size(); ++i) {
        std::vector<std::string> const names = ListValues(algorithms_[i]->GetConfiguration());
        if (std::find(names.begin(), names.end(), setting.name) != names.end()) {
            owners.push_back(i);
            meanings.push_back(algorithms_[i]->GetName() + "." + setting.name);
        } else if (point != std::string::npos && IsSameName(prefix, algorithms_[i]->GetName())) {
            setting.name.erase(0, point + 1);
            return i;
        }
    }
    if (owners.size() > 1) {
        throw UsageError("the property '" + setting.name + "' may be one of several: " + Join(meanings) +
                         "; write which one");
    }
    if (owners.empty() && algorithms_.size() > 1) RefuseName(setting);
    return owners.empty() ? 0 : owners.front();
}

void AlgorithmChain::RefuseName(Setting const& setting) const {
    std::vector<std::string> known, plain, owners;
    for (auto const& algorithm : algorithms_) {
        owners.push_back("'" + algorithm->GetName() + "'");
        for (std::string const& name : ListValues(algorithm->GetConfiguration())) {
            plain.push_back(name);
            known.push_back(algorithm->GetName() + "." + name);
        }
    }
    std::string text = "unknown property '" + setting.name + "' of " + Join(owners);
    if (!known.empty()) {
        text += "; did you mean '" + FindNearest(setting.name, plain) + "'? (known: " + Join(known) + ")";
    }
    throw UsageError(text);
}

void AlgorithmChain::FindColourFormats() {
    formats_ = algorithms_.front()->GetColourFormats();
    for (auto const& algorithm : algorithms_) {
        auto const& accepted = algorithm->GetColourFormats();
        std::erase_if(formats_, [&](media::ColourFormat format) {
            return std::find(accepted.begin(), accepted.end(), format) == accepted.end();
        });
    }
    if (!formats_.empty()) return;
    std::vector<std::string> names;
    for (auto const& algorithm : algorithms_) names.push_back("'" + algorithm->GetName() + "'");
    throw UsageError("no colour format is accepted by all of the algorithms " + Join(names));
}

AlgorithmChain::Frame AlgorithmChain::Process(Frame const& frame, algorithm::video::Result& result) {
    frame_.Start(frame);
    for (std::size_t i = 0; i < algorithms_.size(); ++i) {
        placeAtWork_->store(i, std::memory_order_relaxed);
        algorithms_[i]->Process(frame_, result);
    }
    return frame_.Get();
}

void AlgorithmChain::Reset() {
    for (std::size_t i = 0; i < algorithms_.size(); ++i) {
        placeAtWork_->store(i, std::memory_order_relaxed);
        algorithms_[i]->Reset();
    }
}

}  // namespace qel::host
