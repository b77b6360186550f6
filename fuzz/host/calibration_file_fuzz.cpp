// Calibration files and files of marked references from anywhere: refused with the file's name and the place, or
// taken; what a calibration file holds is written and read back alike.
#include <cstdint>
#include <string>
#include <string_view>

#include "calibration/calibration_file.hpp"
#include "calibration/reference_file.hpp"
#include "check.hpp"
#include "error.hpp"

namespace {

namespace calibration = qel::host::calibration;
using qel::fuzz::Check;

void CheckRefusal(qel::host::Error const& error) {
    Check(std::string_view(error.what()).starts_with("marks.json"), "an error does not name the file");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string const text(reinterpret_cast<char const*>(data), size);
    try {
        calibration::ParseProblem("marks.json", text);
    } catch (qel::host::Error const& error) {
        CheckRefusal(error);
    }
    try {
        std::string const written = calibration::FormatCalibration(calibration::ParseCalibration("marks.json", text));
        Check(calibration::FormatCalibration(calibration::ParseCalibration("again", written)) == written,
              "a calibration reads back otherwise");
    } catch (qel::host::Error const& error) {
        CheckRefusal(error);
    }
    return 0;
}
