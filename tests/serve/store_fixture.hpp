#pragma once

#include <memory>
#include <string>
#include <vector>

#include <boost/json.hpp>
#include <gtest/gtest.h>

#include "read_json.hpp"
#include "runtime.hpp"
#include "store.hpp"
#include "support/temporary_directory.hpp"

namespace qel::serve {

/// A store on a file of its own folder, with the algorithms of store_algorithms.cpp and threshold_algorithm.cpp.
class StoreTest : public testing::Test {
protected:
    static boost::json::object Parse(std::string const& text) { return ReadJson(text).as_object(); }

    /// Ends the store, if there is one, and makes another one of the file.
    Store& Open() {
        store_.reset();
        runtime_ = std::make_unique<host::Runtime>();
        store_ = std::make_unique<Store>(*runtime_, path_);
        return *store_;
    }

    Store& OpenWith(std::string const& content) {
        test::WriteFile(path_, content);
        return Open();
    }

    std::vector<std::string> Patch(std::string const& patch) { return store_->Patch(Parse(patch)); }

    /// The faults of a patch as "path: reason", after a check that nothing has changed.
    std::vector<std::string> RefusalOf(std::string const& patch) {
        auto const document = store_->GetDocument();
        auto const data = store_->GetData("");
        std::string const file = test::ReadFile(path_);
        std::vector<std::string> faults;
        try {
            Patch(patch);
            ADD_FAILURE() << "taken: " << patch;
        } catch (Refused const& refused) {
            for (Fault const& fault : refused.GetFaults()) faults.push_back(fault.path + ": " + fault.reason);
        }
        EXPECT_EQ(store_->GetDocument(), document);
        EXPECT_EQ(store_->GetData(""), data);
        EXPECT_EQ(test::ReadFile(path_), file);
        return faults;
    }

    std::string Data(std::string const& path) { return store_->GetData(path).value_or("none"); }

    test::TemporaryDirectory directory_;
    std::string const path_ = directory_ / "config.json";
    std::unique_ptr<host::Runtime> runtime_;
    std::unique_ptr<Store> store_;
};

/// A configuration with one stream, "gate", with two algorithms.
inline constexpr char const* Gate =
    R"({"streams": {"gate": {"source": "gate.avi", "algorithms": ["threshold", "Invert"]}}})";

}  // namespace qel::serve
