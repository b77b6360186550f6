// Models that are loaded from the disk and run.
#include <memory>
#include <string>
#include <vector>

#include "inference/following.hpp"
#include "oom/sweep.hpp"
#include "qel/inference/inference_error.hpp"
#include "qel/inference/load_labels.hpp"

namespace qel::oom {
namespace {

using inference::Model;
using inference::Tensor;
using inference::backend::Manager;

constexpr char Name[] = "a model with a name that needs memory";

/// A model root with one model, and a manager that has loaded it. Made once: loading starts a process.
struct Served {
    Served() {
        folder.Write(Name, "labels.txt", "a label that is too long to be kept in place\nsky\n");
        folder.Write(Name, test::MeanClassifier{}, R"({"max_batch_size": 1, "version": "1"})");
        manager = std::make_unique<Manager>(folder.GetRoot().string());
        if (!manager->WaitUntilSettled(test::Patience)) throw std::runtime_error("the model is not loaded in time");
    }

    test::ModelFolder folder{};
    std::unique_ptr<Manager> manager{};
};

Served& Shared() {
    static Served served;
    return served;
}

std::string TextOf(std::vector<Tensor> const& tensors) {
    std::string text;
    for (Tensor const& tensor : tensors) {
        for (std::size_t const extent : tensor.shape) text += std::to_string(extent) + " ";
        for (float const value : tensor.values) text += std::to_string(value) + " ";
    }
    return text;
}

std::string Same(std::string const& text) { return text; }

Operation OnText(std::string name, void (*act)(std::string&)) {
    return MakeOperation(
        "inference/" + name, Promise::Strong, [] { return std::string(); }, act, Same);
}

/// Runs the network on two samples, one a part.
void RunOnTensor(std::string& text) {
    Tensor batch{{2, 3, 8, 8}, std::vector<float>(2 * 3 * 8 * 8, 0.5F)};
    text = TextOf(Shared().manager->GetModel(Name)->Run(batch));
}

void RunOnPictures(std::string& text) {
    std::vector<std::uint8_t> const pixels(3 * 16 * 16, 200);
    inference::Picture const picture{pixels.data(), 3 * 16, 16, 16, 3};
    std::vector<inference::Picture> const pictures(2, picture);
    text = TextOf(Shared().manager->GetModel(Name)->Run(pictures, {.width = 8, .height = 8, .scale = 1.0F / 255}));
}

/// With a folder of models, which is followed on a thread.
Operation MakeManager() {
    Operation operation = OnText("MakeManager", [](std::string& text) {
        static test::TemporaryDirectory const folder;
        Manager const manager(folder.GetPath().string());
        text = manager.GetModel(Name) == nullptr ? "none" : "some";
    });
    operation.startsThread = true;
    return operation;
}

}  // namespace

Operations InferenceOperations() {
    return {
        OnText("LoadLabels",
               [](std::string& text) {
                   std::string joined;
                   for (std::string const& label :
                        inference::LoadLabels(Shared().folder.FileOf(Name, "labels.txt").string()))
                       joined += label + ",";
                   text = joined;
               }),
        OnText("LoadLabelsRefused",
               [](std::string& text) {
                   text = Caught<inference::InferenceError>(
                       [] { inference::LoadLabels("a file with a name that is not there"); });
               }),
        MakeManager(),
        OnText("MakeManagerRefused",
               [](std::string& text) {
                   text = Caught<std::invalid_argument>(
                       [] { Manager const manager("a folder with a name that is not there"); });
               }),
        OnText("GetModel",
               [](std::string& text) {
                   auto const model = Shared().manager->GetModel(Name);
                   std::string told =
                       model->GetName() + " " + model->GetLabels().at(0) + " " + model->GetMetadata().GetVersion();
                   text = told + (Shared().manager->WaitUntilSettled(test::Patience) ? " settled" : " busy");
               }),
        OnText("RunOnTensor", RunOnTensor),
        OnText("RunOnPictures", RunOnPictures),
        OnText("RunRefused",
               [](std::string& text) {
                   text = Caught<std::invalid_argument>([] { Shared().manager->GetModel(Name)->Run(Tensor{}); });
               }),
    };
}

}  // namespace qel::oom
