// The manager follows its folder: models come, change, break and go.

#include <filesystem>
#include <fstream>
#include <future>
#include <optional>
#include <stdexcept>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "inference/following.hpp"
#include "qel/inference/get_model_root_path.hpp"
#include "qel/logging/configure.hpp"

namespace qel::inference {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Disk : public testing::Test {
protected:
    void Start(std::vector<std::string> const& followed = {"a"}) {
        manager.emplace(folder.GetRoot().string());
        for (std::string const& name : followed) reports.Follow(*manager, name);
        Settle();
    }
    void Settle() { ASSERT_TRUE(manager->WaitUntilSettled(test::Patience)); }
    std::vector<std::string> Reported() {
        Settle();
        return reports.Take();
    }
    /// What the model scores for a red picture: the first weight of its first class; -1 without a model.
    int Answer(std::string const& name = "a") const { return AnswerOf(manager->GetModel(name)); }
    static int AnswerOf(std::shared_ptr<Model const> const& model) {
        if (model == nullptr) return -1;
        Tensor red{{1, 3, 8, 8}, std::vector<float>(192, 0)};
        std::fill_n(red.values.begin(), 64, 1.0F);
        return static_cast<int>(model->Run(red)[0].values[0] + 0.5F);
    }
    /// A network that gives that answer.
    static test::MeanClassifier Giving(int answer) {
        return {.weights = {{static_cast<float>(answer), 0, 0}, {0, 0, 1}}, .softmax = false};
    }

    LoggedText log;
    test::ModelFolder folder;
    Reports reports;
    std::optional<backend::Manager> manager;
};

auto const Comes = ElementsAre("a building", "a built", "a loaded");

TEST_F(Disk, IsTheModelRootOfTheProcess) {
    Start();
    EXPECT_EQ(GetModelRootPath("a"), folder.GetRoot().string() + "/a");
}

TEST_F(Disk, LoadsWhatIsThereAtTheStart) {
    folder.Write("a", Giving(7), R"({"max_batch_size": 3, "version": "2.5", "means": [1]})");
    folder.Write("a", "labels.txt", "red\nblue\n");
    Start();
    EXPECT_EQ(Answer(), 7);
    auto const model = manager->GetModel("a");
    EXPECT_EQ(model->GetName(), "a");
    EXPECT_EQ(model->GetMetadata().GetVersion(), "2.5");
    EXPECT_EQ(model->GetMetadataText(), R"({"max_batch_size": 3, "version": "2.5", "means": [1]})");
    EXPECT_THAT(model->GetLabels(), ElementsAre("red", "blue"));
    EXPECT_THAT(model->GetInputShape(), ElementsAre(0, 3, 8, 8));
    EXPECT_EQ(manager->GetModel("b"), nullptr);
}

TEST_F(Disk, ReportsTheStatesOfAModelThatAppearsInOrder) {
    Start();
    EXPECT_THAT(reports.Take(), IsEmpty());
    folder.Write("a", Giving(7));
    EXPECT_THAT(Reported(), Comes);
    EXPECT_EQ(Answer(), 7);
}

TEST_F(Disk, LoadsFilesThatAreWrittenInPlace) {
    Start();
    fs::create_directories(folder.GetRoot() / "a" / "onnx");
    test::WriteFile(folder.FileOf("a", "metadata.json"), R"({"max_batch_size": 1})");
    EXPECT_THAT(Reported(), IsEmpty()) << "no model yet";
    {
        std::string const bytes = test::MakeOnnx(Giving(7));
        std::ofstream file(folder.FileOf("a", "model.onnx"), std::ios::binary);
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            file.put(bytes[i]).flush();
            if (i % 100 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    }
    EXPECT_THAT(Reported(), Comes) << "the file counts when it is closed";
    EXPECT_EQ(Answer(), 7);
}

TEST_F(Disk, LoadsAgainWhenAHalfWrittenFileWasCaught) {
    std::string const bytes = test::MakeOnnx(Giving(7));
    folder.Write("a", "metadata.json", R"({"max_batch_size": 1})");
    std::ofstream file(folder.FileOf("a", "model.onnx"), std::ios::binary);
    file.write(bytes.data(), 100).flush();
    Start();
    EXPECT_EQ(Answer(), -1);
    EXPECT_THAT(log.Take(), HasSubstr("model.onnx is no ONNX model, or only a part of one"));
    reports.Take();
    file.write(bytes.data() + 100, static_cast<std::streamsize>(bytes.size() - 100));
    file.close();
    EXPECT_THAT(Reported(), Comes);
    EXPECT_EQ(Answer(), 7);
}

TEST_F(Disk, LoadsFoldersThatAreMovedInAndUnloadsThoseThatAreMovedOut) {
    Start({"a", "b"});
    folder.Write(".next", Giving(7));
    EXPECT_THAT(Reported(), IsEmpty()) << "a name that begins with a dot";
    fs::rename(folder.GetRoot() / ".next", folder.GetRoot() / "a");
    EXPECT_THAT(Reported(), Comes);
    fs::rename(folder.GetRoot() / "a", folder.GetRoot() / "b");
    Settle();
    EXPECT_EQ(Answer("a"), -1);
    EXPECT_EQ(Answer("b"), 7);
    folder.Write("b", Giving(8));
    Settle();
    EXPECT_EQ(Answer("b"), 8) << "followed under its new name";
    fs::rename(folder.GetRoot() / "b" / "onnx", folder.GetRoot() / "b" / "other");
    Settle();
    EXPECT_EQ(Answer("b"), -1);
    fs::rename(folder.GetRoot() / "b" / "other", folder.GetRoot() / "b" / "onnx");
    Settle();
    EXPECT_EQ(Answer("b"), 8);
}

TEST_F(Disk, FollowsLinks) {
    test::ModelFolder const elsewhere;
    elsewhere.Write("m", Giving(7));
    Start();
    fs::create_directory_symlink(elsewhere.GetRoot() / "m", folder.GetRoot() / "a");
    EXPECT_THAT(Reported(), Comes);
    elsewhere.Write("m", Giving(8));
    Settle();
    EXPECT_EQ(Answer(), 8);
    fs::remove(folder.GetRoot() / "a");
    EXPECT_THAT(Reported(), testing::Contains("a unloaded"));
    folder.Write("a", "metadata.json", R"({"max_batch_size": 1})");
    fs::create_hard_link(elsewhere.FileOf("m", "model.onnx"), folder.FileOf("a", "model.onnx"));
    Settle();
    EXPECT_EQ(Answer(), 8) << "a hard link, which nobody writes and closes";
    fs::remove(folder.FileOf("a", "model.onnx"));
    fs::create_symlink(elsewhere.FileOf("m", "model.onnx"), folder.FileOf("a", "model.onnx"));
    Settle();
    EXPECT_EQ(Answer(), 8);
}

TEST_F(Disk, ReplacesAModelWhoseFileChanges) {
    folder.Write("a", Giving(7));
    Start();
    reports.Take();
    auto const former = manager->GetModel("a");
    folder.Write("a", "model.onnx", test::MakeOnnx(Giving(8)));
    EXPECT_THAT(Reported(), Comes);
    EXPECT_EQ(Answer(), 8);
    EXPECT_EQ(AnswerOf(former), 7) << "whoever holds the former one may use it";
}

TEST_F(Disk, ReplacesAModelWhoseMetadataOrLabelsChange) {
    folder.Write("a", Giving(7));
    Start();
    reports.Take();
    folder.Write("a", "metadata.json", R"({"max_batch_size": 9, "version": "new"})");
    EXPECT_THAT(Reported(), Comes);
    EXPECT_EQ(manager->GetModel("a")->GetMetadata().GetVersion(), "new");
    folder.Write("a", "labels.txt", "x\ny");
    EXPECT_THAT(Reported(), Comes);
    EXPECT_THAT(manager->GetModel("a")->GetLabels(), ElementsAre("x", "y"));
    fs::remove(folder.FileOf("a", "labels.txt"));
    EXPECT_THAT(Reported(), Comes);
    EXPECT_THAT(manager->GetModel("a")->GetLabels(), IsEmpty());
}

TEST_F(Disk, LeavesAModelAloneWhoseFilesAreTouchedByNobody) {
    folder.Write("a", Giving(7));
    Start();
    reports.Take();
    folder.Write("b", Giving(8));
    folder.Write("a", "readme.txt", "nothing that counts");
    test::WriteFile((folder.GetRoot() / "readme.txt").string(), "no folder");
    EXPECT_THAT(Reported(), IsEmpty());
}

TEST_F(Disk, UnloadsAModelOneOfWhoseFilesGoes) {
    for (char const* const file : {"model.onnx", "metadata.json"}) {
        folder.Write("a", Giving(7));
        if (!manager) Start();
        Settle();
        reports.Take();
        fs::remove(folder.FileOf("a", file));
        EXPECT_THAT(Reported(), ElementsAre("a unloaded")) << file;
        EXPECT_EQ(Answer(), -1);
    }
    folder.Write("a", Giving(7));
    EXPECT_THAT(Reported(), Comes);
    folder.Remove("a");
    EXPECT_THAT(Reported(), ElementsAre("a unloaded"));
    EXPECT_EQ(Answer(), -1);
}

TEST_F(Disk, FailsABrokenModelAloneAndLoadsItWhenItIsRestored) {
    folder.Write("a", Giving(7));
    folder.Write("b", Giving(8));
    Start({"a", "b"});
    reports.Take();
    log.Take();
    folder.Write("a", "model.onnx", "garbage");
    EXPECT_THAT(Reported(), ElementsAre("a building", "a failed"));
    EXPECT_EQ(log.Take(), "Model a failed: " + folder.FileOf("a", "model.onnx").string() +
                              " is no ONNX model, or only a part of one\n");
    EXPECT_EQ(Answer("a"), -1);
    EXPECT_EQ(Answer("b"), 8);
    folder.Write("a", "model.onnx", test::MakeOnnx(Giving(9)));
    EXPECT_THAT(Reported(), Comes);
    EXPECT_EQ(Answer("a"), 9);
}

TEST_F(Disk, LoadsInOrderOfPriorityThenName) {
    auto const metadata = [](int priority) {
        return R"({"max_batch_size": 1, "backend_loading_priority": )" + std::to_string(priority) + "}";
    };
    folder.Write("a", Giving(1), metadata(-5));
    folder.Write("b", Giving(1), metadata(3));
    folder.Write("c", Giving(1), metadata(3));
    folder.Write("d", Giving(1));
    folder.Write("e", Giving(1), metadata(2000000000));
    logging::Configure("information");
    Start();
    logging::Configure("");
    EXPECT_EQ(log.Take(),
              "Model e is loaded, version unknown\nModel b is loaded, version unknown\n"
              "Model c is loaded, version unknown\nModel d is loaded, version 1\nModel a is loaded, version unknown\n");
}

TEST_F(Disk, ComesBackWithItsRoot) {
    folder.Write("a", Giving(7));
    Start();
    reports.Take();
    auto const aside = folder.GetRoot().string() + "-aside";
    fs::rename(folder.GetRoot(), aside);
    EXPECT_THAT(Reported(), ElementsAre("a unloaded"));
    EXPECT_THAT(log.Take(), HasSubstr("is gone; models are loaded again when it is back"));
    fs::rename(aside, folder.GetRoot());
    EXPECT_THAT(Reported(), Comes);
    folder.Write("a", Giving(8));
    Settle();
    EXPECT_EQ(Answer(), 8);
}

TEST_F(Disk, LooksAtEverythingWhenChangesComeTooFast) {
    folder.Write("a", Giving(7));
    Start();
    log.Take();
    // The thread is kept from reading while more happens than the system remembers.
    std::promise<void> caught, go;
    manager->RegisterModelUpdateCallback("b", [&, called = false](model::State) mutable {
        if (std::exchange(called, true)) return;
        caught.set_value();
        go.get_future().wait();
    });
    folder.Write("b", Giving(1));
    ASSERT_EQ(caught.get_future().wait_for(test::Patience), std::future_status::ready);
    std::ifstream limitFile("/proc/sys/fs/inotify/max_queued_events");
    int limit = 0;
    ASSERT_TRUE(limitFile >> limit);
    auto const one = folder.FileOf("a", "x"), two = folder.FileOf("a", "y");
    test::WriteFile(one, "");
    for (int i = 0; i <= limit / 4; ++i) {  // four events each
        fs::rename(one, two);
        fs::rename(two, one);
    }
    folder.Write("a", Giving(8));
    go.set_value();
    Settle();
    EXPECT_THAT(log.Take(), HasSubstr("came too fast to be told; all models are looked at"));
    EXPECT_EQ(Answer("a"), 8);
}

TEST_F(Disk, EndsPromptlyWithLoadsUnderWay) {
    for (char name = 'a'; name < 'u'; ++name) folder.Write({name}, Giving(1));
    for (int i = 0; i < 5; ++i) {
        backend::Manager const shortLived(folder.GetRoot().string());
        std::this_thread::sleep_for(std::chrono::milliseconds(7 * i));
    }
}

TEST_F(Disk, GoesOnWhenCallbacksThrow) {
    manager.emplace(folder.GetRoot().string());
    manager->RegisterModelUpdateCallback("a", [](model::State) { throw std::runtime_error("no"); });
    reports.Follow(*manager, "a");
    folder.Write("a", Giving(7));
    EXPECT_THAT(Reported(), Comes);
    EXPECT_THAT(log.Take(), HasSubstr("A callback for the state of model a failed: no"));
    EXPECT_EQ(Answer(), 7);
}

}  // namespace
}  // namespace qel::inference
