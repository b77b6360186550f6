#include "calibration/calibration_file.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>

#include <Eigen/Dense>

#include "calibration/json_document.hpp"
#include "whole_file.hpp"

namespace qel::host::calibration {
namespace {

using Cursor = JsonDocument::Cursor;

/// A covariance is symmetric and has no negative variance in any direction, but for what rounding left.
void CheckCovariance(Cursor const& cursor, Covariance const& covariance) {
    Eigen::Matrix4d matrix;
    for (std::size_t row = 0; row < ParameterCount; ++row) {
        for (std::size_t column = 0; column < ParameterCount; ++column) {
            matrix(static_cast<Eigen::Index>(row), static_cast<Eigen::Index>(column)) = covariance[row][column];
        }
    }
    double const size = matrix.cwiseAbs().maxCoeff();
    if (!matrix.isApprox(matrix.transpose(), 1e-6)) cursor.Fail("it is not symmetric");
    Eigen::SelfAdjointEigenSolver<Eigen::Matrix4d> const solver(matrix, Eigen::EigenvaluesOnly);
    if (solver.eigenvalues().minCoeff() < -1e-6 * size) cursor.Fail("it is no covariance: a variance is negative");
}

Covariance ReadCovariance(Cursor const& cursor) {
    constexpr double Largest = 1e9;
    Covariance covariance{};
    std::size_t row = 0;
    for (Cursor const& numbers : cursor.GetElements(ParameterCount, ParameterCount)) {
        std::size_t column = 0;
        for (Cursor const& number : numbers.GetElements(ParameterCount, ParameterCount)) {
            covariance[row][column++] = number.GetNumber(-Largest, Largest);
        }
        ++row;
    }
    CheckCovariance(cursor, covariance);
    return covariance;
}

std::string ToText(double value) {
    char text[32];
    auto const end = std::to_chars(text, text + sizeof text, value).ptr;
    return {text, end};
}

Calibration Read(JsonDocument const& document) {
    Cursor const root = document.GetRoot();
    std::vector<std::string_view> members(ParameterNames.begin(), ParameterNames.end());
    members.emplace_back("covariance");
    root.RequireMembersAmong(members);
    std::array<double, ParameterCount> values{};
    for (std::size_t p = 0; p < ParameterCount; ++p) {
        values[p] = root.GetMember(ParameterNames[p]).GetNumber(ParameterRanges[p].low, ParameterRanges[p].high);
    }
    Calibration calibration{ToMounting(values), std::nullopt};
    if (root.HasMember("covariance")) calibration.covariance = ReadCovariance(root.GetMember("covariance"));
    return calibration;
}

}  // namespace

Calibration ReadCalibration(std::string const& path) { return Read(JsonDocument::Read(path)); }

Calibration ParseCalibration(std::string const& name, std::string const& text) { return Read({name, text}); }

std::string FormatCalibration(Calibration const& calibration) {
    std::string text = "{\n";
    auto const values = ToArray(calibration.mounting);
    for (std::size_t p = 0; p < ParameterCount; ++p) {
        text += std::string(p == 0 ? "" : ",\n") + "  \"" + ParameterNames[p] + "\": " + ToText(values[p]);
    }
    if (calibration.covariance) {
        text += ",\n  \"covariance\": [";
        for (std::size_t row = 0; row < ParameterCount; ++row) {
            text += row == 0 ? "\n    [" : ",\n    [";
            for (std::size_t column = 0; column < ParameterCount; ++column) {
                text += (column == 0 ? "" : ", ") + ToText((*calibration.covariance)[row][column]);
            }
            text += ']';
        }
        text += "\n  ]";
    }
    return text + "\n}\n";
}

void WriteCalibration(std::string const& path, Calibration const& calibration) {
    ReplaceFile(path, FormatCalibration(calibration));
}

}  // namespace qel::host::calibration
