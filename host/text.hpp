#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace qel::host {

/// The text with every byte that is not part of well-formed UTF-8 replaced by U+FFFD.
std::string ToValidUtf8(std::string_view text);

/// A time of a video, or time left, as "1:02:03.4", or "2:03.4" below an hour.
/// decimals: how many follow the seconds, 0 to 3; the rest is cut off.
std::string FormatTime(std::chrono::nanoseconds time, int decimals);

/// A number with a fixed count of decimals.
std::string FormatNumber(double value, int decimals);

/// Whichever of the known names needs the fewest insertions, deletions, replacements and swaps of neighbours to become
/// the given one, capitals not told apart; the first of several, empty without any.
std::string FindNearest(std::string_view name, std::vector<std::string> const& known);

/// Whether two names are the same, neither capitals of ASCII letters nor underscores and hyphens being told apart:
/// "privacy_mask" is "PrivacyMask".
bool IsSameName(std::string_view left, std::string_view right);

/// The names as one text, separated by a comma and a blank.
std::string Join(std::vector<std::string> const& names);

}  // namespace qel::host
