#include "qel/serialize/load_json_from_file.hpp"

#include <fstream>

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

#include "support/message_of.hpp"

namespace qel::serialize {
namespace {

using test::MessageOf;

struct Record {
    void Serialize(cereal::JSONInputArchive& archive) { archive(cereal::make_nvp("size", size)); }

    unsigned int size = 0;
};

class LoadJsonFromFile : public testing::Test {
protected:
    LoadJsonFromFile() { boost::filesystem::create_directory(directory); }
    ~LoadJsonFromFile() override { boost::filesystem::remove_all(directory); }

    void Write(std::string const& text) const { std::ofstream(file.string()) << text; }
    std::string Error() const {
        return MessageOf<cereal::Exception>([&] {
            Record record;
            cereal::utils::LoadJsonFromFile(file, record);
        });
    }

    boost::filesystem::path const directory =
        boost::filesystem::temp_directory_path() / boost::filesystem::unique_path("qel-%%%%-%%%%");
    boost::filesystem::path const file = directory / "record.json";
};

TEST_F(LoadJsonFromFile, LetsTheValueReadItself) {
    Write("{\"size\": 12}");
    Record record;
    cereal::utils::LoadJsonFromFile(file, record);
    EXPECT_EQ(record.size, 12U);
}

TEST_F(LoadJsonFromFile, NamesAFileThatIsNotThere) {
    EXPECT_EQ(Error(), file.string() + ": the file cannot be opened");
}

TEST_F(LoadJsonFromFile, NamesADirectory) {
    boost::filesystem::create_directory(file);
    EXPECT_EQ(Error(), file.string() + ": the file cannot be read");
}

TEST_F(LoadJsonFromFile, NamesAFileThatIsNotJson) {
    Write("{\"size\": }");
    EXPECT_EQ(Error().find(file.string() + ": line 1, column 10: "), 0U) << Error();
    Write("");
    EXPECT_EQ(Error(), file.string() + ": line 1, column 1: there is no JSON document");
}

TEST_F(LoadJsonFromFile, PassesOnWhatTheReadingThrows) {
    Write("{\"other\": 1}");
    EXPECT_EQ(Error(), "JSON Parsing failed - provided NVP (size) not found");
}

}  // namespace
}  // namespace qel::serialize
