#include "qel/inference/load_labels.hpp"

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qel/inference/inference_error.hpp"
#include "support/message_of.hpp"
#include "support/temporary_directory.hpp"

namespace qel::inference {
namespace {

using testing::ElementsAre;

class Labels : public testing::Test {
protected:
    std::vector<std::string> Load(std::string_view text) const {
        test::WriteFile(path, text);
        return LoadLabels(path);
    }
    std::string RefusalOf(std::string_view text) const {
        test::WriteFile(path, text);
        return Refusal();
    }
    /// The message without the path in front.
    std::string Refusal() const {
        std::string const message = test::MessageOf<InferenceError>([&] { (void)LoadLabels(path); });
        std::string const start = "The labels " + path + ": ";
        return message.starts_with(start) ? message.substr(start.size()) : "does not name the file: " + message;
    }

    test::TemporaryDirectory folder;
    std::string path = folder / "labels.txt";
};

TEST_F(Labels, StandOneALine) {
    EXPECT_THAT(Load("person\ncar\n"), ElementsAre("person", "car"));
    EXPECT_THAT(Load("person\r\n  big car \t\r\nv\xc3\xa9lo"), ElementsAre("person", "big car", "v\xc3\xa9lo"));
    EXPECT_EQ(Load(std::string(256, 'a'))[0].size(), 256U);
}

TEST_F(Labels, AreRefusedWithTheLine) {
    EXPECT_EQ(RefusalOf(""), "is empty");
    EXPECT_EQ(RefusalOf("a\n\nb\n"), "line 2: there is no label");
    EXPECT_EQ(RefusalOf("a\n" + std::string(257, 'a')), "line 2: the label is longer than 256 bytes");
    EXPECT_EQ(RefusalOf("a\nb\nc\x01"), "line 3: the label holds a control character");
    EXPECT_EQ(RefusalOf(std::string_view("a\0b", 3)), "line 1: the label holds a control character");
    for (char const* const bad : {"\xFF", "\xC3", "\xC0\xAF", "\xED\xA0\x80", "\xF5\x80\x80\x80", "\xE0\x80\x80",
                                  "\xF0\x80\x80\x80", "\xF4\x90\x80\x80", "a\x80"}) {
        EXPECT_EQ(RefusalOf(bad), "line 1: the label is not UTF-8");
    }
    EXPECT_EQ(Load("\xF4\x8F\xBF\xBF\xEF\xBF\xBF")[0].size(), 7U) << "the last characters there are";
}

TEST_F(Labels, AreRefusedWhereTheFileIsNoneOrTooLarge) {
    EXPECT_EQ(Refusal(), "cannot be opened: No such file or directory");
    test::WriteFile(path, "a");
    std::filesystem::resize_file(path, 1000000000000);
    EXPECT_EQ(Refusal(), "is larger than 1048576 bytes");
    std::filesystem::remove(path);
    std::filesystem::create_directory(path);
    EXPECT_EQ(Refusal(), "is no regular file");
}

}  // namespace
}  // namespace qel::inference
