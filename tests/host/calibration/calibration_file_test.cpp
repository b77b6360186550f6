#include "calibration/calibration_file.hpp"

#include <filesystem>
#include <random>
#include <string_view>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "error.hpp"
#include "support/message_of.hpp"
#include "support/temporary_directory.hpp"
#include "whole_file.hpp"

namespace qel::host::calibration {
namespace {

namespace fs = std::filesystem;
using qel::test::MessageOf;
using testing::HasSubstr;

std::string ErrorIn(std::string const& text) {
    return MessageOf<Error>([&] { ParseCalibration("c.json", text); });
}

std::size_t CountFiles(fs::path const& folder) {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

constexpr Covariance Errors{
    {{0.09, 0.01, 0.01, 0.02}, {0.01, 0.16, 0, 0.01}, {0.01, 0, 0.01, -0.01}, {0.02, 0.01, -0.01, 0.1 + 0.2}}};

TEST(CalibrationFile, IsReadWithAndWithoutACovariance) {
    Calibration const plain =
        ParseCalibration("c.json", R"({"tilt":16.877,"roll":2.224,"height_m":7.066,"vertical_fov":27})");
    EXPECT_EQ(ToArray(plain.mounting), (std::array<double, 4>{16.877, 2.224, 7.066, 27}));
    EXPECT_FALSE(plain.covariance);
    Calibration const full = ParseCalibration("c.json", R"({"tilt":1,"roll":2,"height_m":3,"vertical_fov":4,
        "covariance":[[1,0,0,0],[0,2,0,0],[0,0,3,0.5],[0,0,0.5,4]]})");
    EXPECT_EQ(full.covariance.value()[2][3], 0.5);
}

TEST(CalibrationFile, KeepsEveryBit) {
    Calibration const calibration{{1.0 / 3, -2.0 / 7, 7.0656789012345678, 27.1}, Errors};
    Calibration const read = ParseCalibration("c.json", FormatCalibration(calibration));
    EXPECT_EQ(ToArray(read.mounting), ToArray(calibration.mounting));
    EXPECT_EQ(read.covariance, calibration.covariance);
    EXPECT_FALSE(ParseCalibration("c.json", FormatCalibration({calibration.mounting, std::nullopt})).covariance);
}

TEST(CalibrationFile, IsWrittenForPeopleToRead) {
    EXPECT_EQ(FormatCalibration({{16.5, -2, 7.25, 27}, std::nullopt}),
              "{\n  \"tilt\": 16.5,\n  \"roll\": -2,\n  \"height_m\": 7.25,\n  \"vertical_fov\": 27\n}\n");
}

TEST(CalibrationFile, IsRefusedWithThePlaceOfWhatIsWrong) {
    struct Case {
        char const* text;
        char const* error;
    };
    constexpr Case Cases[] = {
        {"[]", "c.json:1:1: expected an object, not an array"},
        {"{}", "c.json:1:1: the member \"tilt\" is missing"},
        {"{\"tilt\":1,\"roll\":2,\"height_m\":3}", "c.json:1:1: the member \"vertical_fov\" is missing"},
        {"{\"tilt\":1,\"roll\":2,\n\"hight_m\":3}",
         "c.json:2:11: hight_m: no such member is known; there are \"tilt\", \"roll\", \"height_m\", \"vertical_fov\", "
         "\"covariance\""},
        {"{\"tilt\":\"1\",\"roll\":2,\"height_m\":3,\"vertical_fov\":4}",
         "c.json:1:9: tilt: expected a number, not a text"},
        {"{\"tilt\":181,\"roll\":2,\"height_m\":3,\"vertical_fov\":4}",
         "c.json:1:9: tilt: expected a number from -90 to 180, not 181"},
        {"{\"tilt\":1,\"roll\":-181,\"height_m\":3,\"vertical_fov\":4}",
         "c.json:1:18: roll: expected a number from -180 to 180, not -181"},
        {"{\"tilt\":1,\"roll\":2,\"height_m\":0,\"vertical_fov\":4}",
         "c.json:1:31: height_m: expected a number from 0.01 to 10000, not 0"},
        {"{\"tilt\":1,\"roll\":2,\"height_m\":3,\"vertical_fov\":180}",
         "c.json:1:48: vertical_fov: expected a number from 0.1 to 179.9, not 180"},
        {"{\"tilt\":1,\"roll\":2,\"height_m\":3,\"vertical_fov\":4,\"covariance\":[1]}",
         "c.json:1:63: covariance: expected 4 elements, not 1"},
        {"{\"tilt\":1,\"roll\":2,\"height_m\":3,\"vertical_fov\":4,\"covariance\":[[1,2,3],[],[],[]]}",
         "c.json:1:64: covariance[0]: expected 4 elements, not 3"},
        {"{\"tilt\":1,\"roll\":2,\"height_m\":3,\"vertical_fov\":4,\n"
         "\"covariance\":[[1,0,0,0],[0.5,1,0,0],[0,0,1,0],[0,0,0,1]]}",
         "c.json:2:14: covariance: it is not symmetric"},
        {"{\"tilt\":1,\"roll\":2,\"height_m\":3,\"vertical_fov\":4,\n"
         "\"covariance\":[[1,2,0,0],[2,1,0,0],[0,0,1,0],[0,0,0,1]]}",
         "c.json:2:14: covariance: it is no covariance: a variance is negative"},
        {"{\"tilt\":1e999,\"roll\":2,\"height_m\":3,\"vertical_fov\":4}", "c.json:1:"},
    };
    for (Case const& c : Cases) EXPECT_THAT(ErrorIn(c.text), HasSubstr(c.error)) << c.text;
}

TEST(CalibrationFile, IsReadOrRefusedHoweverItIsDamaged) {
    std::string const whole = FormatCalibration({{16.877, -2.224, 7.066, 27.324}, Errors});
    std::mt19937 random(17);
    int refused = 0;
    for (int round = 0; round < 5000; ++round) {
        std::string text = whole;
        for (int change = 0; change < 1 + round % 3; ++change) {
            constexpr std::string_view Bytes = "{}[]:,\"\\ \n0123456789-+.eEtrufalsn\0\xff";
            std::size_t const at = random() % text.size();
            switch (random() % 4) {
                case 0:
                    text.erase(at, 1 + random() % 8);
                    break;
                case 1:
                    text.insert(at, 1, Bytes[random() % Bytes.size()]);
                    break;
                case 2:
                    text[at] = Bytes[random() % Bytes.size()];
                    break;
                default:
                    text.insert(at, text.substr(random() % text.size(), random() % 40));
            }
            if (text.empty()) text.push_back('x');
        }
        try {
            Calibration const calibration = ParseCalibration("c.json", text);
            EXPECT_EQ(ToArray(ParseCalibration("c.json", FormatCalibration(calibration)).mounting),
                      ToArray(calibration.mounting));
        } catch (Error const& error) {
            ++refused;
            EXPECT_THAT(error.what(), testing::StartsWith("c.json:"));
        }
    }
    EXPECT_GT(refused, 2000);
    EXPECT_LT(refused, 5000);
}

TEST(CalibrationFile, IsReplacedInOneStep) {
    qel::test::TemporaryDirectory const directory;
    std::string const path = (directory.GetPath() / "c.json").string();
    WriteCalibration(path, {{1, 2, 3, 4}, std::nullopt});
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    WriteCalibration(path, {{5, 6, 7, 8}, Errors});
    EXPECT_EQ(ReadCalibration(path).mounting.tilt, 5);
    EXPECT_EQ(ReadCalibration(path).covariance, Errors);
    EXPECT_EQ(CountFiles(directory.GetPath()), 1U);
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640U) << "it keeps its rights";
}

TEST(CalibrationFile, IsReplacedBehindALink) {
    qel::test::TemporaryDirectory const directory;
    fs::path const real = directory.GetPath() / "real.json", link = directory.GetPath() / "link.json";
    WriteCalibration(real.string(), {{1, 2, 3, 4}, std::nullopt});
    fs::create_symlink("real.json", link);
    WriteCalibration(link.string(), {{5, 6, 7, 8}, std::nullopt});
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(ReadCalibration(real.string()).mounting.tilt, 5);
}

TEST(CalibrationFile, LeavesNothingBehindWhereItCannotBeWritten) {
    qel::test::TemporaryDirectory const directory;
    EXPECT_EQ(MessageOf<Error>([] { WriteCalibration("/no/such/c.json", {}); }),
              "cannot write '/no/such/c.json': No such file or directory");
    fs::path const folder = directory.GetPath() / "c.json";
    fs::create_directories(folder / "full");
    EXPECT_THAT(MessageOf<Error>([&] { WriteCalibration(folder.string(), {}); }), HasSubstr("cannot write '"));
    EXPECT_EQ(CountFiles(directory.GetPath()), 1U) << "the temporary file is gone";
}

}  // namespace
}  // namespace qel::host::calibration
