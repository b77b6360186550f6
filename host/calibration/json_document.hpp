#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <boost/json/value.hpp>

#include "error.hpp"

namespace qel::host::calibration {

/// A JSON text of a person's, read with care: its size and depth are bounded, and what is wrong is told by file, line
/// and column.
class JsonDocument {
public:
    static constexpr std::size_t MaximumSize = 1 << 20;
    static constexpr std::size_t MaximumDepth = 8;

    /// name: how errors call the text. Throws Error for what is no JSON.
    JsonDocument(std::string name, std::string text);

    /// Reads a file. Throws Error for one that cannot be read, is larger than MaximumSize or holds no JSON.
    static JsonDocument Read(std::string const& path);

    /// A value within the document and the way to it.
    class Cursor {
    public:
        /// The member of an object; throws Error where there is none.
        Cursor GetMember(std::string_view name) const;
        bool HasMember(std::string_view name) const;
        /// The elements of an array of low to high elements.
        std::vector<Cursor> GetElements(std::size_t low, std::size_t high) const;
        /// A number from low to high.
        double GetNumber(double low, double high) const;
        /// A whole number from low to high.
        int GetInteger(int low, int high) const;
        /// A text of at most so many bytes.
        std::string GetText(std::size_t longest) const;
        /// Throws Error unless this is an object whose members are all among these.
        void RequireMembersAmong(std::vector<std::string_view> const& names) const;

        /// Throws Error: what is wrong at this value, with its place.
        [[noreturn]] void Fail(std::string const& what) const;

    private:
        friend class JsonDocument;
        struct Step {
            std::string_view member;  // of an object, or of an array where it has no data
            std::size_t index;
        };

        Cursor(JsonDocument const& document, boost::json::value const& value, std::string path,
               std::vector<Step> steps);

        JsonDocument const* document_;
        boost::json::value const* value_;
        std::string path_;
        std::vector<Step> steps_;
    };

    Cursor GetRoot() const;

private:
    [[noreturn]] void FailAt(std::size_t offset, std::string const& what) const;
    std::size_t Locate(std::vector<Cursor::Step> const& steps) const;

    std::string name_;
    std::string text_;
    boost::json::value value_;
};

}  // namespace qel::host::calibration
