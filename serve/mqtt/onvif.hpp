#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace qel::serve::mqtt {

/// A line of results as ONVIF metadata in JSON, after the rules of the ONVIF Analytics specification ("ONVIF Metadata
/// in JSON over MQTT": attributes of the XML are members with '@', all of them texts):
///
///     {"Frame":[{"@UtcTime":"2026-03-01T12:00:00.000Z","@Source":"gate","Object":[
///       {"@ObjectId":"0","Appearance":{
///         "Shape":{"BoundingBox":{"@left":"-0.5","@top":"0.75","@right":"-0.375","@bottom":"0.5"},
///                  "CenterOfGravity":{"@x":"-0.4375","@y":"0.625"}},
///         "Class":{"Type":[{"@Likelihood":"0.92","#text":"motion"}]}}}]}]}
///
/// Coordinates go from -1 at the left and the bottom of the frame to 1. An object's number is its place in the line.
/// stream: becomes the source. time: when the line was written.
/// Empty where the line is none of those that `qel run` writes.
std::string MakeOnvifFrame(std::string_view stream, std::chrono::system_clock::time_point time, std::string_view line);

}  // namespace qel::serve::mqtt
