#include "mqtt/onvif.hpp"

#include <array>
#include <charconv>
#include <ctime>
#include <utility>

#include <boost/json.hpp>

namespace qel::serve::mqtt {
namespace {

namespace json = boost::json;

std::string ToText(double value) {
    std::array<char, 64> digits{};
    // Adding nought makes a plain nought of a negative one.
    auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), value + 0.0).ptr;
    return {digits.data(), end};
}

std::string ToUtc(std::chrono::system_clock::time_point time) {
    auto const milliseconds = std::chrono::floor<std::chrono::milliseconds>(time);
    auto const seconds = std::chrono::floor<std::chrono::seconds>(milliseconds);
    std::time_t const clock = std::chrono::system_clock::to_time_t(seconds);
    std::tm parts{};
    gmtime_r(&clock, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    std::string const fraction = std::to_string(1000 + (milliseconds - seconds).count()).substr(1);
    return std::string(text.data()) + "." + fraction + "Z";
}

json::object MakeObject(std::size_t place, json::object const& object) {
    auto const& detection = object.at("detection").as_object();
    auto const& box = detection.at("bounding_box").as_object();
    auto const x = [&box](char const* name) { return 2 * box.at(name).to_number<double>() - 1; };
    auto const y = [&box](char const* name) { return 1 - 2 * box.at(name).to_number<double>(); };
    double const left = x("x_min");
    double const right = x("x_max");
    double const top = y("y_min");
    double const bottom = y("y_max");
    json::object const shape{
        {"BoundingBox",
         {{"@left", ToText(left)}, {"@top", ToText(top)}, {"@right", ToText(right)}, {"@bottom", ToText(bottom)}}},
        {"CenterOfGravity", {{"@x", ToText((left + right) / 2)}, {"@y", ToText((top + bottom) / 2)}}}};
    json::object type;
    // A confidence that is no number stands as null in the line.
    if (detection.at("confidence").is_number()) {
        type["@Likelihood"] = ToText(detection.at("confidence").to_number<double>());
    }
    type["#text"] = detection.at("label").as_string();
    json::object const appearance{{"Shape", shape}, {"Class", {{"Type", json::array{std::move(type)}}}}};
    return {{"@ObjectId", std::to_string(place)}, {"Appearance", appearance}};
}

}  // namespace

std::string MakeOnvifFrame(std::string_view stream, std::chrono::system_clock::time_point time, std::string_view line) {
    try {
        json::value const document = json::parse(line);
        json::array objects;
        for (auto const& object : document.as_object().at("objects").as_array()) {
            objects.push_back(MakeObject(objects.size(), object.as_object()));
        }
        json::object const frame{{"@UtcTime", ToUtc(time)}, {"@Source", stream}, {"Object", std::move(objects)}};
        return json::serialize(json::object{{"Frame", json::array{frame}}});
    } catch (std::exception const&) {
        return {};
    }
}

}  // namespace qel::serve::mqtt
