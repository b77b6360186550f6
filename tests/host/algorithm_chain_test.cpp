#include "algorithm_chain.hpp"

#include <algorithm>
#include <stdexcept>
#include <thread>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "catalogue.hpp"
#include "error.hpp"
#include "qel/algorithm/video/inplace/algorithm.hpp"
#include "qel/algorithm/video/passthrough/algorithm.hpp"
#include "qel/algorithm/video/registry/property.hpp"
#include "qel/algorithm/video/registry/register.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "support/message_of.hpp"

namespace qel::host {
namespace {

namespace video = algorithm::video;
using media::ColourFormat;
using testing::ElementsAre;

constexpr char const* AdderName = "test.chain.BrightAdder";
constexpr char const* DoublerName = "test.chain.Doubler";
constexpr char const* KeeperName = "test.chain.Keeper";
constexpr char const* ColourfulName = "test.chain.Colourful";

/// Works on the first pixel of grey frames.
template <int Kind>
class Changer final : public video::inplace::Algorithm {
public:
    explicit Changer(char const* name)
        : Algorithm(hash::MurmurThree32(name), {ColourFormat::Rgb24, ColourFormat::Grey8, ColourFormat::Nv12}) {}

    void SetAmount(std::uint32_t amount) { amount_ = amount; }
    void Process(media::video::FrameBase<void>& frame, video::Result& /*result*/) override {
        auto& pixel = *static_cast<std::uint8_t*>(frame.GetPlane(0).GetBuffer());
        pixel = static_cast<std::uint8_t>(Kind == 0 ? pixel + amount_ : pixel * amount_);
    }

private:
    std::uint32_t amount_ = 0;
};

/// Keeps the last frame if told to, and reports its first pixel as an object's area.
class Keeper final : public video::passthrough::Algorithm {
public:
    Keeper() : Algorithm(hash::MurmurThree32(KeeperName), {ColourFormat::Nv12, ColourFormat::Grey8}) {}

    void SetKeeps(bool keeps) { keeps_ = keeps; }
    void Reset() override {
        if (std::exchange(frames_, 0) > 3) throw std::runtime_error("too much to forget");
    }
    int GetFrames() const { return frames_; }
    void Process(media::video::FrameBase<void const> const& frame, video::Result& result) override {
        if (keeps_) kept_ = frame;
        ++frames_;
        result.objects.push_back(
            {{0, 0, 1, 1}, *static_cast<std::uint8_t const*>(frame.GetPlane(0).GetBuffer()), "seen", 1, {}});
    }

private:
    bool keeps_ = false;
    int frames_ = 0;
    media::video::FrameBase<void const> kept_;
};

class Colourful final : public video::passthrough::Algorithm {
public:
    Colourful() : Algorithm(hash::MurmurThree32(ColourfulName), {ColourFormat::Yuv24}) {}
    void Process(media::video::FrameBase<void const> const& /*frame*/, video::Result& /*result*/) override {}
};

template <class Class, class T, class Set>
std::vector<configuration::Property> Declare(char const* name, T value, Set set) {
    return {video::registry::MakeProperty<Class>(std::string(name), std::string("Said once."), value, set)};
}

std::vector<configuration::Property> const& AdderProperties() {
    static auto const properties = Declare<Changer<0>>("amount", std::uint32_t{5}, &Changer<0>::SetAmount);
    return properties;
}

std::vector<configuration::Property> const& DoublerProperties() {
    static auto const properties = Declare<Changer<1>>("amount", std::uint32_t{2}, &Changer<1>::SetAmount);
    return properties;
}

std::vector<configuration::Property> const& KeeperProperties() {
    static auto const properties = Declare<Keeper>("keeps", false, &Keeper::SetKeeps);
    return properties;
}

bool Enter(char const* name, video::registry::Info::Make make, std::vector<configuration::Property> const& (*list)()) {
    return video::registry::Register(
        {hash::MurmurThree32(name), name, std::move(make), list, video::registry::CreateNodes(list)});
}

[[maybe_unused]] bool const Registered =
    Enter(
        AdderName, [](auto&) { return std::make_shared<Changer<0>>(AdderName); }, AdderProperties) &&
    Enter(
        DoublerName, [](auto&) { return std::make_shared<Changer<1>>(DoublerName); }, DoublerProperties) &&
    Enter(
        KeeperName, [](auto&) { return std::make_shared<Keeper>(); }, KeeperProperties) &&
    video::registry::Register({hash::MurmurThree32(ColourfulName),
                               ColourfulName,
                               [](auto&) { return std::make_shared<Colourful>(); },
                               {},
                               {}});

/// The runtime is the first base: it outlives the chain.
struct OwnRuntime {
    Runtime runtime;
};

class Chain : private OwnRuntime, public AlgorithmChain {
public:
    Chain(std::vector<hash::MurmurThree32> const& ids, std::vector<Setting> const& settings)
        : AlgorithmChain(runtime, ids, settings) {}
};

Chain Make(std::vector<char const*> const& names, std::vector<Setting> const& settings = {}) {
    std::vector<hash::MurmurThree32> ids;
    for (char const* name : names) ids.push_back(FindAlgorithm(name));
    return {ids, settings};
}

AlgorithmChain::Frame GreyFrame(std::uint8_t level) {
    media::video::FrameBase<void> const frame(ColourFormat::Grey8, 4, 4, {}, {});
    std::fill_n(static_cast<std::uint8_t*>(frame.GetPlane(0).GetBuffer()), frame.GetPlane(0).GetSize(), level);
    return MakeReadOnly(frame);
}

int LevelOf(AlgorithmChain::Frame const& frame) {
    return *static_cast<std::uint8_t const*>(frame.GetPlane(0).GetBuffer());
}

TEST(AlgorithmChain, RunsItsAlgorithmsInOrderEachOnWhatTheOneBeforeLeft) {
    video::Result result;
    EXPECT_EQ(LevelOf(Make({"bright_adder", "doubler"}).Process(GreyFrame(10), result)), 30);
    EXPECT_EQ(LevelOf(Make({"doubler", "bright_adder"}).Process(GreyFrame(10), result)), 25);
    EXPECT_TRUE(result.objects.empty());
    Make({"keeper"}).Process(GreyFrame(10), result);
    auto const before = GreyFrame(10);
    EXPECT_EQ(LevelOf(Make({"doubler", "keeper", "bright-adder"}).Process(before, result)), 25);
    EXPECT_EQ(LevelOf(before), 10);
    ASSERT_EQ(result.objects.size(), 2U);
    EXPECT_EQ(result.objects[1].area, 20U) << "between the two";
}

TEST(AlgorithmChain, CopiesFramesOnlyWhereAnAlgorithmChangesPixelsThatOthersHold) {
    struct Case {
        std::vector<char const*> names;
        std::vector<Setting> settings;
        std::uint64_t copiesPerFrame;
    };
    Case const cases[] = {
        {{"keeper"}, {}, 0},
        {{"keeper"}, {{"keeps", "true"}}, 0},
        {{"doubler"}, {}, 1},
        {{"doubler", "bright_adder"}, {}, 1},
        {{"keeper", "doubler", "bright_adder"}, {{"keeps", "true"}}, 1},
        {{"doubler", "keeper", "bright_adder"}, {}, 1},
        {{"doubler", "keeper", "bright_adder"}, {{"keeps", "true"}}, 2},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(&c - cases);
        Chain chain = Make(c.names, c.settings);
        for (std::uint8_t i = 1; i <= 5; ++i) {
            video::Result result;
            auto const frame = GreyFrame(i);
            auto const shown = chain.Process(frame, result);
            EXPECT_EQ(LevelOf(frame), i);
            EXPECT_EQ(chain.GetCopies(), i * c.copiesPerFrame);
            EXPECT_EQ(shown == frame, c.copiesPerFrame == 0);
        }
    }
}

TEST(AlgorithmChain, HasEveryAlgorithmForgetAndTellsWhichOneCannot) {
    AlgorithmChain chain = Make({"doubler", "keeper"});
    auto const& keeper = dynamic_cast<Keeper&>(*chain.GetAlgorithm(1));
    video::Result result;
    for (int i = 0; i < 3; ++i) chain.Process(GreyFrame(1), result);
    EXPECT_EQ(keeper.GetFrames(), 3);
    chain.Reset();
    EXPECT_EQ(keeper.GetFrames(), 0);
    for (int i = 0; i < 4; ++i) chain.Process(GreyFrame(1), result);
    EXPECT_EQ(test::MessageOf<Error>([&] { chain.Reset(); }),
              "the algorithm 'Keeper' cannot be reset: too much to forget");
}

TEST(AlgorithmChain, AcceptsWhatAllOfThemAcceptInTheFirstOnesOrder) {
    EXPECT_THAT(Make({"doubler"}).GetColourFormats(),
                ElementsAre(ColourFormat::Rgb24, ColourFormat::Grey8, ColourFormat::Nv12));
    EXPECT_THAT(Make({"doubler", "keeper"}).GetColourFormats(), ElementsAre(ColourFormat::Grey8, ColourFormat::Nv12));
    EXPECT_THAT(Make({"keeper", "doubler"}).GetColourFormats(), ElementsAre(ColourFormat::Nv12, ColourFormat::Grey8));
    EXPECT_EQ(test::MessageOf<UsageError>([] {
                  Make({"keeper", "doubler", "colourful"});
              }),
              "no colour format is accepted by all of the algorithms 'Keeper', 'Doubler', 'Colourful'");
}

TEST(AlgorithmChain, GivesSettingsToTheAlgorithmThatHasThem) {
    struct Case {
        std::vector<Setting> settings;
        int level;
    };
    Case const cases[] = {
        {{}, 30},
        {{{"BrightAdder.amount", "1"}}, 22},
        {{{"bright_adder.amount", "1"}, {"doubler.amount", "3"}}, 33},
        {{{"doubler.amount", "3"}, {"keeps", "true"}, {"doubler.amount", "4"}}, 60},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(&c - cases);
        video::Result result;
        EXPECT_EQ(LevelOf(Make({"bright_adder", "doubler", "keeper"}, c.settings).Process(GreyFrame(10), result)),
                  c.level);
    }
    video::Result result;
    EXPECT_EQ(LevelOf(Make({"doubler"}, {{"amount", "3"}}).Process(GreyFrame(10), result)), 30);
    EXPECT_EQ(LevelOf(Make({"doubler"}, {{"doubler.amount", "3"}}).Process(GreyFrame(10), result)), 30);
}

TEST(AlgorithmChain, RefusesSettingsOfNobodyOrOfSeveral) {
    auto const message = [](std::vector<char const*> const& names, Setting const& setting) {
        return test::MessageOf<UsageError>([&] { Make(names, {setting}); });
    };
    std::vector<char const*> const three{"bright_adder", "doubler", "keeper"};
    EXPECT_EQ(message(three, {"amount", "3"}),
              "the property 'amount' may be one of several: BrightAdder.amount, Doubler.amount; write which one");
    EXPECT_EQ(message(three, {"amonut", "3"}),
              "unknown property 'amonut' of 'BrightAdder', 'Doubler', 'Keeper'; did you mean 'amount'? (known: "
              "BrightAdder.amount, Doubler.amount, Keeper.keeps)");
    EXPECT_EQ(message(three, {"colourful.amount", "3"}),
              "unknown property 'colourful.amount' of 'BrightAdder', 'Doubler', 'Keeper'; did you mean 'amount'? "
              "(known: BrightAdder.amount, Doubler.amount, Keeper.keeps)");
    EXPECT_EQ(message(three, {"doubler.keeps", "true"}),
              "unknown property 'keeps' of 'Doubler'; did you mean 'amount'? (known: amount)");
    EXPECT_EQ(message({"doubler"}, {"amonut", "3"}),
              "unknown property 'amonut' of 'Doubler'; did you mean 'amount'? (known: amount)");
    EXPECT_THAT(message(three, {"doubler.amount", "x"}), testing::StartsWith("cannot set 'amount' to 'x': "));
}

TEST(AlgorithmChain, RefusesAnAlgorithmThatIsThereTwice) {
    EXPECT_EQ(test::MessageOf<UsageError>([] {
                  Make({"doubler", "keeper", "Doubler"});
              }),
              "the algorithm 'Doubler' is named twice");
}

TEST(AlgorithmChain, FollowsTheNodesOfEachAlgorithm) {
    Chain chain = Make({"bright_adder", "doubler"});
    chain.GetConfiguration(1).Set("amount", std::uint32_t{4});
    video::Result result;
    EXPECT_EQ(LevelOf(chain.Process(GreyFrame(10), result)), 60);
    chain.GetConfiguration(0).Set("amount", std::uint32_t{0});
    EXPECT_EQ(LevelOf(chain.Process(GreyFrame(10), result)), 40);
}

ChainLink OwnLink(Runtime& runtime, char const* name) {
    auto const id = FindAlgorithm(name);
    return {id, runtime.MakeOwnConfiguration(id)};
}

TEST(AlgorithmChain, FollowsTheNodesThatItIsGivenAndNotTheRuntimes) {
    Runtime runtime;
    runtime.MakeConfigurations();
    ChainLink const own = OwnLink(runtime, "doubler");
    auto const common = runtime.FindConfiguration(own.id);
    AlgorithmChain one(runtime, {OwnLink(runtime, "bright_adder"), own}), other(runtime, {{own.id, common}});
    video::Result result;
    EXPECT_EQ(LevelOf(one.Process(GreyFrame(10), result)), 30);
    own.map->Set("amount", std::uint32_t{3});
    EXPECT_EQ(&one.GetConfiguration(1), own.map.get());
    EXPECT_EQ(LevelOf(one.Process(GreyFrame(10), result)), 45);
    EXPECT_EQ(LevelOf(other.Process(GreyFrame(10), result)), 20);
    common->Set("amount", std::uint32_t{5});
    EXPECT_EQ(LevelOf(one.Process(GreyFrame(10), result)), 45);
    EXPECT_EQ(LevelOf(other.Process(GreyFrame(10), result)), 50);
}

TEST(AlgorithmChain, IsMadeOnSeveralThreadsOfOneRuntime) {
    Runtime runtime;
    runtime.MakeConfigurations();
    std::vector<std::thread> threads;
    for (std::uint32_t i = 0; i < 4; ++i) {
        threads.emplace_back([&runtime, i] {
            for (int n = 0; n < 20; ++n) {
                ChainLink const own = OwnLink(runtime, "doubler");
                own.map->Set("amount", i);
                AlgorithmChain chain(runtime, {own, OwnLink(runtime, "keeper")});
                video::Result result;
                EXPECT_EQ(LevelOf(chain.Process(GreyFrame(10), result)), 10 * static_cast<int>(i));
            }
        });
    }
    for (auto& thread : threads) thread.join();
}

TEST(AlgorithmChain, RefusesWrongLinks) {
    Runtime runtime;
    runtime.MakeConfigurations();
    auto const message = [&](std::vector<char const*> const& names) {
        return test::MessageOf<UsageError>([&] {
            std::vector<ChainLink> links;
            for (char const* name : names) links.push_back(OwnLink(runtime, name));
            AlgorithmChain const chain(runtime, links);
        });
    };
    EXPECT_EQ(message({}), "no algorithm is named");
    EXPECT_EQ(message({"doubler", "keeper", "Doubler"}), "the algorithm 'Doubler' is named twice");
    EXPECT_EQ(message({"doubler", "colourful"}),
              "no colour format is accepted by all of the algorithms 'Doubler', 'Colourful'");
}

}  // namespace
}  // namespace qel::host
