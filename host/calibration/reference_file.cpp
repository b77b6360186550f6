#include "calibration/reference_file.hpp"

#include "calibration/json_document.hpp"

namespace qel::host::calibration {
namespace {

using Cursor = JsonDocument::Cursor;

constexpr int LargestSide = 65536;
constexpr double LongestReference = 10000;
constexpr std::size_t MostReferences = 500;

Pixel ReadPixel(Cursor const& cursor) {
    auto const numbers = cursor.GetElements(2, 2);
    constexpr double Furthest = 2.0 * LargestSide;
    return {numbers[0].GetNumber(-Furthest, Furthest), numbers[1].GetNumber(-Furthest, Furthest)};
}

Reference ReadReference(Cursor const& cursor, Reference::Kind kind, char const* from, char const* to) {
    cursor.RequireMembersAmong({from, to, "metres", "tolerance", "name"});
    Reference reference{kind, ReadPixel(cursor.GetMember(from)), ReadPixel(cursor.GetMember(to)),
                        cursor.GetMember("metres").GetNumber(0.001, LongestReference)};
    if (cursor.HasMember("tolerance")) {
        reference.tolerance = cursor.GetMember("tolerance").GetNumber(0, LongestReference);
    }
    if (cursor.HasMember("name")) reference.name = cursor.GetMember("name").GetText(200);
    return reference;
}

void ReadFixed(Cursor const& cursor, Problem& problem) {
    cursor.RequireMembersAmong({ParameterNames.begin(), ParameterNames.end()});
    for (std::size_t p = 0; p < ParameterCount; ++p) {
        if (!cursor.HasMember(ParameterNames[p])) continue;
        problem.fixed[p] =
            cursor.GetMember(ParameterNames[p]).GetNumber(ParameterRanges[p].low, ParameterRanges[p].high);
    }
}

Problem Read(JsonDocument const& document, std::vector<std::string_view> const& others) {
    Cursor const root = document.GetRoot();
    std::vector<std::string_view> known{"size", "ground", "vertical", "click_error", "fixed"};
    known.insert(known.end(), others.begin(), others.end());
    root.RequireMembersAmong(known);
    auto const size = root.GetMember("size").GetElements(2, 2);
    Problem problem{{size[0].GetInteger(1, LargestSide), size[1].GetInteger(1, LargestSide)}, {}, {}, 1};
    if (root.HasMember("ground")) {
        for (Cursor const& cursor : root.GetMember("ground").GetElements(0, MostReferences)) {
            problem.references.push_back(ReadReference(cursor, Reference::Kind::Ground, "from", "to"));
        }
    }
    if (root.HasMember("vertical")) {
        for (Cursor const& cursor : root.GetMember("vertical").GetElements(0, MostReferences)) {
            problem.references.push_back(ReadReference(cursor, Reference::Kind::Vertical, "foot", "top"));
        }
    }
    if (root.HasMember("click_error")) problem.clickError = root.GetMember("click_error").GetNumber(0.001, 1000);
    if (root.HasMember("fixed")) ReadFixed(root.GetMember("fixed"), problem);
    return problem;
}

}  // namespace

Problem ReadProblem(std::string const& path) { return Read(JsonDocument::Read(path), {}); }

Problem ParseProblem(std::string const& name, std::string const& text, std::vector<std::string_view> const& others) {
    return Read({name, text}, others);
}

}  // namespace qel::host::calibration
