// Compares the calibration engine with lengths that were surveyed in the field.
//
//   qel_example_calibration_check SURVEY.csv
//
// The table's columns: kind ("dist" or "height"), view (the camera's name), width and height of the picture in pixels,
// tilt, roll, camera height in metres, vertical field of view (degrees), the first point x and y, then the second
// point's x or the object's height, the second point's y (distances only), and the true length in metres.
// Picture positions are normalised, 0 to 65535. The first line names the columns.
//
// One engine serves one stream and one thread: the program keeps one for each view, as a host does for each camera.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "qel/algorithm/calibration/engine.hpp"

namespace {

namespace calibration = qel::algorithm::calibration;

struct Row {
    std::string kind, view;
    std::vector<double> numbers;  // width and all columns after it
};

Row ParseRow(std::string const& line) {
    std::vector<std::string> fields(1);
    for (char const c : line) {
        if (c == ',') {
            fields.emplace_back();
        } else if (c != '\r') {
            fields.back() += c;
        }
    }
    if (fields.size() != 13)
        throw std::invalid_argument("13 columns expected, " + std::to_string(fields.size()) + " found");
    Row row{fields[0], fields[1], {}};
    for (std::size_t column = 2; column < fields.size(); ++column) {
        bool const unused = fields[column].empty() && column == 11;
        row.numbers.push_back(unused ? 0 : std::stod(fields[column]));
    }
    if (row.kind != "dist" && row.kind != "height") throw std::invalid_argument("unknown kind \"" + row.kind + '"');
    return row;
}

calibration::Engine::Point ToPoint(double x, double y) {
    return {{static_cast<unsigned short>(x)}, {static_cast<unsigned short>(y)}};
}

/// The engines of all views, each made when its view is first met.
class Engines {
public:
    calibration::Engine const& Get(Row const& row) {
        calibration::Engine& engine = engines_[row.view];
        std::vector<double> const& n = row.numbers;
        calibration::Params const params(static_cast<float>(n[2]), static_cast<float>(n[3]),
                                         static_cast<float>(n[4]) * boost::units::si::meters, static_cast<float>(n[5]));
        if (engine.GetCalibrationParams() != params) engine.SetCalibrationParams(params);
        return engine;
    }

private:
    std::map<std::string, calibration::Engine> engines_;
};

double Measure(calibration::Engine const& engine, Row const& row) {
    std::vector<double> const& n = row.numbers;
    qel::geometry::Dimension<int, 2> const size{static_cast<int>(n[0]), static_cast<int>(n[1])};
    calibration::Engine::Point const first = ToPoint(n[6], n[7]);
    if (row.kind == "dist") return engine.GetDistance(first, ToPoint(n[8], n[9]), size).value();
    return engine.GetHeight(first, {static_cast<unsigned short>(n[8])}, size).value();
}

struct Errors {
    std::vector<double> metres, shares;

    void Add(double measured, double truth) {
        metres.push_back(std::abs(measured - truth));
        shares.push_back(std::abs(measured - truth) / truth);
    }

    void Print(char const* title) {
        if (metres.empty()) return;
        std::sort(metres.begin(), metres.end());
        std::sort(shares.begin(), shares.end());
        std::printf("%-24s %4zu   median %.3f mm %.4f %%   largest %.3f mm %.4f %%\n", title, metres.size(),
                    1e3 * metres[metres.size() / 2], 100 * shares[shares.size() / 2], 1e3 * metres.back(),
                    100 * shares.back());
    }
};

int Check(char const* path) {
    std::ifstream file(path);
    if (!file) throw std::runtime_error("cannot be opened");
    Engines engines;
    Errors shorter, distances, heights;
    std::string line;
    std::getline(file, line);
    for (int number = 2; std::getline(file, line); ++number) {
        try {
            if (line.empty()) continue;
            Row const row = ParseRow(line);
            double const truth = row.numbers.back();
            double const measured = Measure(engines.Get(row), row);
            Errors& errors = row.kind == "height" ? heights : truth > 0.5 ? distances : shorter;
            errors.Add(measured, truth);
        } catch (std::exception const& error) {
            throw std::runtime_error("line " + std::to_string(number) + ": " + error.what());
        }
    }
    shorter.Print("distances up to 0.5 m");
    distances.Print("distances over 0.5 m");
    heights.Print("heights");
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: qel_example_calibration_check SURVEY.csv\n");
        return 2;
    }
    try {
        return Check(argv[1]);
    } catch (std::exception const& error) {
        std::fprintf(stderr, "qel_example_calibration_check: %s: %s\n", argv[1], error.what());
        return 1;
    }
}
