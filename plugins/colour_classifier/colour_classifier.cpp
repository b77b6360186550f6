#include "colour_classifier.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numeric>
#include <sstream>
#include <stdexcept>
#include <string>

#include "qel/hash/murmur_three_32.hpp"

namespace qel::colour_classifier {
namespace {

using algorithm::video::Object;
using algorithm::video::Result;
using Frame = media::video::FrameBase<void const>;
using media::ColourFormat;

/// Checks all before any object is changed.
void Check(Frame const& frame, Result const& result) {
    auto const size = frame.GetSize();
    auto const foreground = result.foreground.GetSize();
    std::ostringstream text;
    if (foreground.width != 0 && foreground.height != 0 && foreground != size) {
        text << "Cannot name the colours of objects: their foreground is " << foreground << ", the frame " << size;
        throw std::invalid_argument(text.str());
    }
    for (std::size_t i = 0; i < result.objects.size(); ++i) {
        auto const& box = result.objects[i].box;
        if (box.x1 <= size.width && box.y1 <= size.height) continue;
        text << "Cannot name the colours of object " << i << ": its box (" << box.x0 << ", " << box.y0 << ") to ("
             << box.x1 << ", " << box.y1 << ") reaches beyond the frame, " << size;
        throw std::invalid_argument(text.str());
    }
}

bool IsShade(std::size_t colour) { return colour <= static_cast<std::size_t>(Colour::Grey); }

/// The shares are given to a thousandth.
void SetColours(Object& object, std::array<std::size_t, ColourCount> const& counts, Settings const& settings) {
    std::array<std::size_t, ColourCount> order{};
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return counts[a] > counts[b]; });
    auto const all = static_cast<double>(std::accumulate(counts.begin(), counts.end(), std::size_t{0}));
    std::vector<std::string> names;
    std::vector<double> shares;
    for (std::size_t const colour : order) {
        double const share = static_cast<double>(counts[colour]) / all;
        double const smallest = IsShade(colour) ? settings.smallestShadeShare : settings.smallestShare;
        if (share == 0 || names.size() >= settings.mostColours) break;
        // The first one always counts.
        if (!names.empty() && share < smallest) continue;
        names.emplace_back(BasicColours[colour].name);
        shares.push_back(std::round(share * 1000) / 1000);
    }
    object.attributes["colours"] = std::move(names);
    object.attributes["colour_shares"] = std::move(shares);
}

}  // namespace

// Nv12 first: it is what decoders give. Grey8 is left out: a host that has only that converts it, and finds shades.
ColourClassifier::ColourClassifier()
    : Algorithm(hash::MurmurThree32(TypeName),
                {ColourFormat::Nv12, ColourFormat::Yuv24, ColourFormat::Rgb24, ColourFormat::Bgr24}) {}

void ColourClassifier::Process(Frame const& frame, Result& result) {
    Settings const settings = GetSettings();
    Picture const picture = ViewOf(frame);
    Check(frame, result);
    ColourTable::Rules const rules{settings.neutralChroma, std::exp2(settings.exposure)};
    if (rules != table_.GetRules()) table_ = ColourTable(rules);
    bool const hasForeground = result.foreground.GetSize() == frame.GetSize();
    for (Object& object : result.objects) {
        if (hasForeground) {
            pixels_.Take(result.foreground, object.box, settings.rim);
        } else {
            pixels_.TakeEllipse(object.box);
        }
        if (pixels_.GetCount() == 0) {
            object.attributes.erase("colours");
            object.attributes.erase("colour_shares");
        } else {
            SetColours(object, CountColours(picture, object.box), settings);
        }
    }
}

ColourClassifier::Counts ColourClassifier::CountColours(Picture const& picture, ObjectPixels::Box const& box) const {
    switch (picture.format) {
        case ColourFormat::Nv12:
            return CountColoursOf<ColourFormat::Nv12>(picture, box);
        case ColourFormat::Yuv24:
            return CountColoursOf<ColourFormat::Yuv24>(picture, box);
        case ColourFormat::Bgr24:
            return CountColoursOf<ColourFormat::Bgr24>(picture, box);
        default:
            return CountColoursOf<ColourFormat::Rgb24>(picture, box);
    }
}

template <ColourFormat Format>
ColourClassifier::Counts ColourClassifier::CountColoursOf(Picture const& picture, ObjectPixels::Box const& box) const {
    Counts counts{};
    for (std::size_t y = 0; y < pixels_.GetRows(); ++y) {
        Row<Format> const row(picture, box.y0 + static_cast<unsigned int>(y));
        std::uint32_t const* const words = pixels_.GetRow(y);
        for (std::size_t i = 0; i < pixels_.GetStride(); ++i) {
            for (std::uint32_t word = words[i]; word != 0;) {
                auto const column = static_cast<unsigned int>(std::countl_zero(word));
                word &= ~(0x80000000U >> column);
                auto const colour = row[box.x0 + 32 * i + column];
                ++counts[static_cast<std::size_t>(table_.Find(colour.red, colour.green, colour.blue))];
            }
        }
    }
    return counts;
}

}  // namespace qel::colour_classifier
