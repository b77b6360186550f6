#include "mqtt/spool.hpp"

#include <algorithm>
#include <map>
#include <random>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "error.hpp"
#include "support/message_of.hpp"
#include "support/temporary_directory.hpp"

namespace qel::serve::mqtt {
namespace {

using test::TemporaryDirectory;

constexpr std::uint64_t Plenty = 1 << 20;

std::vector<std::string> TakeAll(Spool& spool) {
    std::vector<std::string> records;
    while (auto record = spool.Take()) records.push_back(std::move(record->bytes));
    return records;
}

std::uint64_t SizeOnDisk(TemporaryDirectory const& folder) {
    std::uint64_t bytes = 0;
    for (auto const& entry : std::filesystem::directory_iterator(folder.GetPath())) {
        if (entry.path().extension() == ".segment") bytes += entry.file_size();
    }
    return bytes;
}

TEST(Spool, GivesOutWhatWasPutInInOrderAndCounted) {
    TemporaryDirectory const folder;
    Spool spool(folder.GetPath().string(), Plenty);
    EXPECT_EQ(spool.Take(), std::nullopt);
    for (char const* record : {"a", "b", "c"}) spool.Append(record);
    std::uint64_t run = 0;
    for (std::uint64_t number = 1; number <= 3; ++number) {
        auto const record = spool.Take();
        ASSERT_TRUE(record);
        EXPECT_EQ(record->number, number);
        EXPECT_EQ(record->bytes, std::string(1, static_cast<char>('a' + number - 1)));
        if (number > 1) {
            EXPECT_EQ(record->run, run);
        }
        run = record->run;
    }
    EXPECT_EQ(spool.Take(), std::nullopt);
    EXPECT_EQ(spool.GetCounts().messages, 3U) << "taken is not completed";
    spool.Complete(2);
    EXPECT_EQ(spool.GetCounts().messages, 1U);
    EXPECT_EQ(spool.GetCounts().lost, 0U);
}

TEST(Spool, GivesOutAgainWhatWasNotCompleted) {
    TemporaryDirectory const folder;
    {
        Spool spool(folder.GetPath().string(), Plenty);
        for (char const* record : {"a", "b", "c", "d"}) spool.Append(record);
        for (int i = 0; i < 3; ++i) spool.Take();
        spool.Complete(1);
        spool.Rewind();
        EXPECT_EQ(spool.Take()->bytes, "b");
        spool.Complete(2);
    }
    Spool spool(folder.GetPath().string(), Plenty);
    EXPECT_EQ(spool.GetCounts().messages, 2U);
    EXPECT_EQ(TakeAll(spool), (std::vector<std::string>{"c", "d"}));
}

TEST(Spool, GoesOnCountingInTheNextProcessUnderANewRun) {
    TemporaryDirectory const folder;
    std::string id;
    {
        Spool spool(folder.GetPath().string(), Plenty);
        spool.Append("a");
        id = spool.GetId();
        EXPECT_EQ(id.size(), 16U);
    }
    Spool spool(folder.GetPath().string(), Plenty);
    spool.Append("b");
    auto const a = spool.Take();
    auto const b = spool.Take();
    EXPECT_EQ(a->number, 1U);
    EXPECT_EQ(b->number, 2U);
    EXPECT_NE(a->run, b->run);
    EXPECT_EQ(spool.GetId(), id);
}

TEST(Spool, DeletesFilesOfWhichEverythingIsCompleted) {
    TemporaryDirectory const folder;
    Spool spool(folder.GetPath().string(), 16 * 1024);
    std::uint64_t number = 0;
    for (int i = 0; i < 1000; ++i) {
        spool.Append(std::string(300, 'x'));
        number = spool.Take()->number;
        spool.Complete(number);
        EXPECT_LE(SizeOnDisk(folder), 2 * 1024U);
    }
    EXPECT_EQ(number, 1000U);
    EXPECT_EQ(spool.GetCounts().lost, 0U);
    EXPECT_EQ(spool.GetCounts().bytes, SizeOnDisk(folder));
}

TEST(Spool, LosesTheOldestWhenItIsFullAndCountsThem) {
    TemporaryDirectory const folder;
    constexpr std::uint64_t MaxBytes = 16 * 1024;
    Spool spool(folder.GetPath().string(), MaxBytes);
    for (int i = 1; i <= 1000; ++i) {
        spool.Append(std::to_string(i) + std::string(92, '.'));
        ASSERT_LE(SizeOnDisk(folder), MaxBytes);
    }
    auto const counts = spool.GetCounts();
    EXPECT_EQ(counts.messages + counts.lost, 1000U);
    EXPECT_GE(counts.bytes, MaxBytes - MaxBytes / 8);
    EXPECT_EQ(counts.bytes, SizeOnDisk(folder));
    auto const first = spool.Take();
    EXPECT_EQ(first->number, counts.lost + 1);
    auto const rest = TakeAll(spool);
    EXPECT_EQ(rest.size() + 1, counts.messages);
    EXPECT_TRUE(rest.back().starts_with("1000."));
}

TEST(Spool, DoesNotCountAsLostWhatWasTakenBeforeItWasDroppedUnlessItIsWantedAgain) {
    TemporaryDirectory const folder;
    Spool spool(folder.GetPath().string(), 4096);
    for (int i = 0; i < 30; ++i) spool.Append(std::string(100, 'x'));
    for (int i = 0; i < 5; ++i) spool.Take();
    std::uint64_t const lost = spool.GetCounts().lost;
    for (int i = 0; i < 300; ++i) spool.Append(std::string(100, 'y'));
    std::uint64_t const later = spool.GetCounts().lost;
    spool.Rewind();
    EXPECT_EQ(spool.GetCounts().lost, later + 5);
    EXPECT_EQ(spool.GetCounts().lost + spool.GetCounts().messages, 330U);
    EXPECT_EQ(spool.Take()->number, spool.GetCounts().lost + 1);
    EXPECT_EQ(lost, 0U);
}

TEST(Spool, RefusesARecordLargerThanASixteenth) {
    TemporaryDirectory const folder;
    Spool spool(folder.GetPath().string(), 16 * 1024);
    std::size_t const largest = 1024 - 28 - 8;
    spool.Append(std::string(largest, 'x'));
    EXPECT_EQ(test::MessageOf<host::Error>([&] { spool.Append(std::string(largest + 1, 'x')); }),
              "a message of 989 bytes is too large for a spool of 16384");
    EXPECT_EQ(spool.GetCounts().lost, 1U);
    EXPECT_EQ(TakeAll(spool).size(), 1U);
}

/// The obvious queue: a list of all records, and how far they were completed and taken.
struct Reference {
    std::vector<std::string> records{};
    std::uint64_t completed = 0;
    std::uint64_t taken = 0;
};

TEST(Spool, AgreesWithAListInMemoryOnRandomOperations) {
    for (std::uint32_t seed = 1; seed <= 8; ++seed) {
        SCOPED_TRACE(seed);
        TemporaryDirectory const folder;
        std::mt19937 random(seed);
        auto const below = [&random](std::uint32_t end) { return static_cast<std::uint32_t>(random() % end); };
        // Small enough for many files, large enough to lose nothing.
        auto const open = [&] { return std::make_unique<Spool>(folder.GetPath().string(), 256 * 1024); };
        auto spool = open();
        Reference reference;
        for (int step = 0; step < 1000; ++step) {
            std::uint32_t const what = below(100);
            if (what < 45) {
                std::string record(below(4) == 0 ? below(2000) : below(40), static_cast<char>(below(256)));
                record += std::to_string(step);
                spool->Append(record);
                reference.records.push_back(std::move(record));
            } else if (what < 80) {
                auto const record = spool->Take();
                ASSERT_EQ(record.has_value(), reference.taken < reference.records.size());
                if (!record) continue;
                ASSERT_EQ(record->number, reference.taken + 1);
                ASSERT_EQ(record->bytes, reference.records[reference.taken++]);
            } else if (what < 94) {
                if (reference.taken == reference.completed) continue;
                reference.completed += 1 + below(static_cast<std::uint32_t>(reference.taken - reference.completed));
                spool->Complete(reference.completed);
            } else if (what < 97) {
                spool->Rewind();
                reference.taken = reference.completed;
            } else if (what < 99 && below(4) == 0) {
                spool.reset();
                spool = open();
                reference.taken = reference.completed;
            } else if (below(10) == 0) {
                spool->Sync();
            }
            auto const counts = spool->GetCounts();
            ASSERT_EQ(counts.messages, reference.records.size() - reference.completed);
            ASSERT_EQ(counts.lost, 0U);
        }
        spool->Rewind();
        reference.records.erase(reference.records.begin(),
                                reference.records.begin() + static_cast<std::ptrdiff_t>(reference.completed));
        EXPECT_EQ(TakeAll(*spool), reference.records);
    }
}

TEST(Spool, LosesExactlyWhatItCountsOnRandomOperationsWhenItIsSmall) {
    for (std::uint32_t seed = 1; seed <= 4; ++seed) {
        SCOPED_TRACE(seed);
        TemporaryDirectory const folder;
        std::mt19937 random(seed);
        Spool spool(folder.GetPath().string(), 32768);
        std::map<std::uint64_t, std::string> records;
        std::uint64_t seen = 0;
        std::uint64_t missed = 0;
        auto const take = [&] {
            auto const record = spool.Take();
            if (!record) return false;
            missed += record->number - seen - 1;
            seen = record->number;
            EXPECT_EQ(record->bytes, records.at(seen));
            if (random() % 2 == 0) spool.Complete(seen);
            return true;
        };
        for (std::uint64_t number = 1; number <= 1000; ++number) {
            records[number] = std::to_string(number) + std::string(random() % 400, 'x');
            spool.Append(records[number]);
            ASSERT_LE(SizeOnDisk(folder), 32768U);
            if (random() % 3 == 0) take();
        }
        while (take()) {}
        EXPECT_GT(missed, 0U);
        EXPECT_EQ(missed, spool.GetCounts().lost);
        EXPECT_EQ(seen, 1000U);
    }
}

TEST(Spool, ServesManyThreads) {
    TemporaryDirectory const folder;
    Spool spool(folder.GetPath().string(), Plenty);
    constexpr int Each = 500;
    std::vector<std::thread> threads;
    for (int writer = 0; writer < 3; ++writer) {
        threads.emplace_back([&spool, writer] {
            for (int i = 0; i < Each; ++i) spool.Append(std::to_string(writer) + ":" + std::to_string(i));
        });
    }
    std::map<char, int> nextOf;
    threads.emplace_back([&spool, &nextOf] {
        for (int count = 0; count < 3 * Each;) {
            auto const record = spool.Take();
            if (!record) continue;
            EXPECT_EQ(record->bytes.substr(2), std::to_string(nextOf[record->bytes[0]]++));
            spool.Complete(record->number);
            ++count;
        }
    });
    threads.emplace_back([&spool] {
        for (int i = 0; i < 20; ++i) spool.Sync();
    });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(spool.GetCounts().messages, 0U);
}

}  // namespace
}  // namespace qel::serve::mqtt
