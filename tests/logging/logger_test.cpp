#include "qel/logging/logger.hpp"

#include <iomanip>
#include <random>
#include <stdexcept>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "logging/captured_lines.hpp"
#include "qel/type/to_string.hpp"

namespace qel::logging {

void PrintTo(Line const& line, std::ostream* stream) {
    *stream << static_cast<int>(line.level) << ' ' << line.name << ": " << line.text;
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Logger const log(Name("qel.test.Logger"));

struct Counted {
    int* writes;
    friend std::ostream& operator<<(std::ostream& stream, Counted const& counted) {
        ++*counted.writes;
        return stream << "counted";
    }
};

struct Throwing {
    friend std::ostream& operator<<(std::ostream& stream, Throwing const&) {
        stream << "half";
        throw std::runtime_error("cannot be written");
    }
};

struct Hexadecimal {
    friend std::ostream& operator<<(std::ostream& stream, Hexadecimal const&) {
        return stream << std::hex << std::setfill('0') << std::setw(4) << 255 << std::setw(8);
    }
};

std::string TextOf(std::string_view format, auto const&... arguments) {
    CapturedLines lines;
    log.Log(Level::Error, format, arguments...);
    auto const taken = lines.Take();
    return taken.size() == 1 ? taken.front().text : "not one line";
}

TEST(Level, IsAPowerOfTwoThatGrowsWithItsWeight) {
    EXPECT_EQ(type::ToString(Level(1)), "debug");
    EXPECT_EQ(type::ToString(Level(2)), "information");
    EXPECT_EQ(type::ToString(Level(4)), "notice");
    EXPECT_EQ(type::ToString(Level(8)), "warning");
    EXPECT_EQ(type::ToString(Level(16)), "error");
    EXPECT_EQ(type::ToString(Level(32)), "critical");
    EXPECT_EQ(type::ToString(Level(64)), "off");
    EXPECT_EQ(type::Strings<Level>::GetMap().size(), 7U);
    EXPECT_EQ(Level::Information, Level(2));
    EXPECT_EQ(Level::Warning, Level(8));
}

TEST(Logger, WritesLevelNameAndText) {
    CapturedLines lines;
    log.Log(Level::Warning, "File %0% not found, leaving the 'version' field of %1% unpopulated", "/a b",
            std::string("m"));
    EXPECT_THAT(lines.Take(), ElementsAre(Line{Level::Warning, "qel.test.Logger",
                                               "File /a b not found, leaving the 'version' field of m unpopulated"}));
}

TEST(Logger, FillsInPlaceholdersByPosition) {
    EXPECT_EQ(TextOf("plain"), "plain");
    EXPECT_EQ(TextOf(""), "");
    EXPECT_EQ(TextOf("%0%", 7), "7");
    EXPECT_EQ(TextOf("%1% before %0%, %1% again", 1, "two"), "two before 1, two again");
    EXPECT_EQ(TextOf("%0%%1%", 1, 2), "12");
    EXPECT_EQ(TextOf("%10%", 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, "ten"), "ten");
    EXPECT_EQ(TextOf("unused", 1, 2), "unused");
    EXPECT_EQ(TextOf("%0% %1% %2%", 1.5, 'c', std::string_view("view")), "1.5 c view");
    EXPECT_EQ(TextOf(std::string_view("%0%x", 3), 1), "1");
}

TEST(Logger, LeavesAPlaceholderWithoutAnArgumentAsItIs) {
    EXPECT_EQ(TextOf("%0%"), "%0%");
    EXPECT_EQ(TextOf("%0% %1% %2%", 5), "5 %1% %2%");
    EXPECT_EQ(TextOf("%1%0%", 5), "%1%0%");
    EXPECT_EQ(TextOf("%18446744073709551616%", 5), "%18446744073709551616%");
    EXPECT_EQ(TextOf("%99999999999999999999999%", 5), "%99999999999999999999999%");
}

TEST(Logger, WritesOnePercentSignForTwoAndLeavesOthersAlone) {
    EXPECT_EQ(TextOf("100%%"), "100%");
    EXPECT_EQ(TextOf("%%0%%", 5), "%0%");
    EXPECT_EQ(TextOf("%%%0%", 5), "%5");
    EXPECT_EQ(TextOf("%"), "%");
    EXPECT_EQ(TextOf("50% of %0%", 5), "50% of 5");
    EXPECT_EQ(TextOf("%a% %-1% %0", 5), "%a% %-1% %0");
    EXPECT_EQ(TextOf("%0%0%", 5), "50%");
}

/// The same a character at a time: each "%" is looked at with the digits behind it.
std::string FormatSlowly(std::string const& format, std::vector<std::string> const& arguments) {
    std::string text;
    for (std::size_t at = 0; at < format.size();) {
        std::size_t const end = format.find_first_not_of("0123456789", at + 1);
        if (format[at] != '%' || end == std::string::npos || format[end] != '%') {
            text += format[at++];
            continue;
        }
        std::string const digits = format.substr(at + 1, end - at - 1);
        if (digits.empty()) {
            text += '%';
        } else {
            std::size_t const index = std::stoul(digits);
            text += index < arguments.size() ? arguments[index] : '%' + digits + '%';
        }
        at = end + 1;
    }
    return text;
}

TEST(Logger, FillsInAnyTextAsReadingItOneCharacterAtATimeWould) {
    std::mt19937 random(7);
    constexpr std::string_view Characters = "%%%%0123a";
    for (int round = 0; round < 3000; ++round) {
        std::string format;
        for (auto i = random() % 12; i > 0; --i) format += Characters[random() % Characters.size()];
        EXPECT_EQ(TextOf(format, "one", 2, "%0%"), FormatSlowly(format, {"one", "2", "%0%"})) << format;
    }
}

TEST(Logger, DoesNotReadPlaceholdersInsideArguments) { EXPECT_EQ(TextOf("%0% %1%", "%1% %%", 2), "%1% %% 2"); }

TEST(Logger, KeepsTheStreamStateOfArgumentsApart) { EXPECT_EQ(TextOf("%0% %1%", Hexadecimal(), 16), "00ff 16"); }

TEST(Logger, WritesNumbersAlikeWhateverTheGlobalLocale) {
    struct Grouping : std::numpunct<char> {
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    auto const former = std::locale::global(std::locale(std::locale::classic(), new Grouping));
    auto const text = TextOf("%0%", 1234567);
    std::locale::global(former);
    EXPECT_EQ(text, "1234567");
}

TEST(Logger, SurvivesAnArgumentThatCannotBeWritten) {
    char const* const null = nullptr;
    EXPECT_EQ(TextOf("%0%, %1%", Throwing(), 2), "(unprintable), 2");
    EXPECT_EQ(TextOf("%0%, %1%", null, 2), "(unprintable), 2");
}

TEST(Logger, DoesNotLookAtArgumentsWhenItsLevelIsOff) {
    CapturedLines lines;
    int writes = 0;
    log.Log(Level::Notice, "%0%", Counted{&writes});
    EXPECT_EQ(writes, 0);
    EXPECT_THAT(lines.Take(), IsEmpty());
    log.Log(Level::Warning, "%0%%0%", Counted{&writes});
    EXPECT_EQ(writes, 2);
}

TEST(Logger, WritesFromTheThresholdUpwards) {
    CapturedLines lines;
    Configure("notice");
    for (Level const level :
         {Level::Debug, Level::Information, Level::Notice, Level::Warning, Level::Error, Level::Critical, Level::Off}) {
        SCOPED_TRACE(type::ToString(level));
        bool const expected = level >= Level::Notice && level != Level::Off;
        EXPECT_EQ(log.IsEnabled(level), expected);
        log.Log(level, "line");
        EXPECT_EQ(lines.Take().size(), expected ? 1U : 0U);
    }
}

TEST(Logger, SharesItsThresholdWithItsCopiesAndNamesakes) {
    CapturedLines const lines;
    Logger const copy = log;
    Logger const namesake(Name("qel.test.Logger"));
    EXPECT_FALSE(copy.IsEnabled(Level::Debug));
    Configure("qel.test.Logger=debug");
    EXPECT_TRUE(copy.IsEnabled(Level::Debug));
    EXPECT_TRUE(namesake.IsEnabled(Level::Debug));
    EXPECT_TRUE(Logger(Name("qel.test.Logger")).IsEnabled(Level::Debug));
}

TEST(Logger, MayBeUsedConfiguredAndCapturedByManyThreads) {
    CapturedLines lines;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t] {
            Logger const own(Name("qel.test.thread" + std::to_string(t)));
            for (int i = 0; i < 200; ++i) {
                own.Log(Level::Error, "%0%", i);
                own.Log(Level::Information, "%0%", i);
                if (i % 20 == t) Configure(i % 40 == t ? "information" : "error");
                if (i % 10 == t) auto const other = BindSink([](Level, std::string_view, std::string_view) {});
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    std::size_t errors = 0;
    for (Line const& line : lines.Take()) errors += line.level == Level::Error;
    EXPECT_EQ(errors, 800U);
}

}  // namespace
}  // namespace qel::logging
