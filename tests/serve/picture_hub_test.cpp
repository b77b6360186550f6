#include "picture_hub.hpp"

#include <atomic>
#include <optional>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "error.hpp"
#include "serve/fake_source.hpp"
#include "support/message_of.hpp"

namespace qel::serve {
namespace {

class Hub : public testing::Test {
protected:
    void Show(std::uint8_t level = 50, unsigned int width = 16) {
        hub->Show({.frame = test::MakeGreyFrame({}, level, width, width / 2)});
    }

    std::atomic<int> drawn = 0;
    std::optional<PictureHub> hub{std::in_place, [this](std::chrono::nanoseconds) { ++drawn; }};
};

TEST_F(Hub, DrawsNothingUnlessAskedTo) {
    for (int i = 0; i < 5; ++i) Show();
    int woken = 0;
    auto const viewer = hub->Look({}, [&] { ++woken; });
    for (int i = 0; i < 5; ++i) Show();
    EXPECT_EQ(woken, 5);
    EXPECT_EQ(drawn, 0) << "a viewer that was woken need not draw";
    auto const picture = viewer->Draw();
    EXPECT_EQ(drawn, 1);
    EXPECT_EQ(picture->sequence, 10U);
    EXPECT_EQ(picture->size, (geometry::Dimension<unsigned int, 2>{16, 8}));
    EXPECT_EQ(picture->jpeg[0], 0xFF);
    EXPECT_EQ(picture->jpeg[1], 0xD8);
}

TEST_F(Hub, DrawsOnceForAllViewersWithTheSameWishes) {
    auto const first = hub->Look({}, {});
    auto const second = hub->Look({}, {});
    auto const small = hub->Look({.maxWidth = 8}, {});
    Show();
    auto const picture = first->Draw();
    EXPECT_EQ(first->Draw(), picture);
    EXPECT_EQ(second->Draw(), picture);
    EXPECT_EQ(drawn, 1);
    EXPECT_EQ(small->Draw()->size, (geometry::Dimension<unsigned int, 2>{8, 4}));
    EXPECT_EQ(drawn, 2);
    Show();
    EXPECT_NE(second->Draw(), picture);
    EXPECT_EQ(second->Draw()->sequence, picture->sequence + 1);
    EXPECT_EQ(drawn, 3);
}

TEST_F(Hub, NeverEnlarges) {
    auto const viewer = hub->Look({.maxWidth = 17}, {});
    Show();
    EXPECT_EQ(viewer->Draw()->size.width, 16U);
}

TEST_F(Hub, HasNothingToShowBeforeTheFirstFrameAndAfterItWasCleared) {
    auto const viewer = hub->Look({}, {});
    EXPECT_FALSE(viewer->Draw());
    EXPECT_EQ(viewer->GetSequence(), 0U);
    Show();
    EXPECT_TRUE(viewer->Draw());
    EXPECT_EQ(viewer->GetSequence(), 1U);
    hub->Clear();
    EXPECT_FALSE(viewer->Draw());
    EXPECT_TRUE(viewer->IsAlive());
    Show();
    EXPECT_EQ(viewer->Draw()->sequence, 2U);
}

TEST_F(Hub, LeavesItsViewersWithNothingWhenItGoes) {
    int woken = 0;
    auto const viewer = hub->Look({}, [&] { ++woken; });
    Show();
    hub->Close();
    EXPECT_EQ(woken, 2) << "who waits for a frame learns that none comes";
    EXPECT_FALSE(viewer->IsAlive());
    Show();
    EXPECT_FALSE(viewer->Draw());
    hub.reset();
    EXPECT_EQ(woken, 2);
    EXPECT_FALSE(viewer->Draw());
    EXPECT_FALSE(viewer->IsAlive());
}

TEST_F(Hub, CountsAndWakesOnlyThoseWhoLook) {
    int woken = 0;
    auto first = hub->Look({}, [&] { ++woken; });
    auto const second = hub->Look({}, {});
    EXPECT_EQ(hub->GetViewers(), 2U);
    first.reset();
    EXPECT_EQ(hub->GetViewers(), 1U);
    Show();
    EXPECT_EQ(woken, 0);
}

TEST_F(Hub, TellsEachViewerOfAFrameThatMakesNoPicture) {
    auto const viewer = hub->Look({}, {});
    hub->Show({.frame = {}});
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(qel::test::MessageOf<host::Error>([&] { (void)viewer->Draw(); }).substr(0, 31),
                  "cannot make a JPEG of 0 x 0 pix");
    }
    Show();
    EXPECT_TRUE(viewer->Draw());
}

TEST_F(Hub, DrawsBoxesAndTheGroundGridWhereTheyAreWanted) {
    auto const draw = [&](bool annotated) { return hub->Look({.annotated = annotated}, {})->Draw()->jpeg; };
    Show(50, 320);
    auto const bare = draw(false);
    EXPECT_EQ(draw(true), bare);
    Scene scene{.frame = test::MakeGreyFrame({}, 50, 320, 160)};
    scene.objects = {{{20, 20, 60, 60}, 1600, "thing", 0.5F}};
    hub->Show(scene);
    auto const boxed = draw(true);
    EXPECT_NE(boxed, bare);
    scene.mounting = host::calibration::Mounting<double>{17, 0, 7, 30};
    hub->Show(scene);
    auto const gridded = draw(true);
    EXPECT_NE(gridded, boxed);
    EXPECT_NE(gridded, bare);
    EXPECT_EQ(draw(false), bare);
}

TEST_F(Hub, ServesManyViewersThatComeLookAndGoOnTheirOwnThreads) {
    std::atomic<bool> stop = false;
    std::vector<std::thread> threads;
    for (unsigned int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            std::uint64_t last = 0;
            while (!stop) {
                auto const viewer = hub->Look({.maxWidth = i % 2 * 8}, [] {});
                for (int look = 0; look < 3; ++look) {
                    auto const picture = viewer->Draw();
                    if (!picture) continue;
                    ASSERT_GE(picture->sequence, last);
                    last = picture->sequence;
                }
            }
        });
    }
    for (int i = 0; i < 200; ++i) Show(static_cast<std::uint8_t>(i));
    stop = true;
    hub->Close();
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace qel::serve
