#include "snapshot_sink.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "canvas.hpp"
#include "overlay.hpp"
#include "text.hpp"

namespace qel::host {
namespace {

constexpr std::size_t Columns = 3;
constexpr std::size_t Cells = Columns * 3;
/// Enough that the chosen ones lie evenly, whatever the length.
constexpr std::size_t MostKept = 4 * Cells;
constexpr Picture::Size LargestCell{480, 480};
constexpr unsigned int TitleHeight = 22;
constexpr unsigned int Gap = 4;

std::string TitleOf(AnalysedFrame const& analysed) {
    std::size_t const count = analysed.result.objects.size();
    return "frame " + std::to_string(analysed.index) + "   " +
           FormatTime(analysed.frame.GetTimestamp().time_since_epoch(), 1) + "   " + std::to_string(count) +
           (count == 1 ? " object" : " objects");
}

}  // namespace

void SnapshotSink::Take(AnalysedFrame const& analysed) {
    if (analysed.index % step_ != 0) return;
    if (kept_.size() == MostKept) {
        step_ *= 2;
        std::erase_if(kept_, [this](Thumbnail const& thumbnail) { return thumbnail.index % step_ != 0; });
        if (analysed.index % step_ != 0) return;
    }
    Picture const whole = ToPicture(analysed.frame);
    Picture small = Scale(whole, FitInto(whole.size, LargestCell));
    DrawObjects(small, whole.size, analysed.result.objects);
    kept_.push_back({analysed.index, TitleOf(analysed), std::move(small)});
}

std::vector<SnapshotSink::Thumbnail const*> SnapshotSink::Choose() const {
    std::size_t const count = std::min(Cells, kept_.size());
    std::vector<Thumbnail const*> chosen;
    for (std::size_t i = 0; i < count; ++i) {
        // From the middle of each of `count` equal parts: neither the first frame nor the last tells much.
        chosen.push_back(&kept_[(2 * i + 1) * kept_.size() / (2 * count)]);
    }
    return chosen;
}

void SnapshotSink::Finish() {
    std::vector<Thumbnail const*> const chosen = Choose();
    if (!chosen.empty()) {
        Picture::Size cell{0, 0};
        for (Thumbnail const* thumbnail : chosen) {
            cell.width = std::max(cell.width, thumbnail->picture.size.width);
            cell.height = std::max(cell.height, thumbnail->picture.size.height);
        }
        auto const columns = static_cast<unsigned int>(std::min(Columns, chosen.size()));
        auto const rows = static_cast<unsigned int>((chosen.size() + Columns - 1) / Columns);
        Picture sheet({columns * (cell.width + Gap) + Gap, rows * (cell.height + TitleHeight + Gap) + Gap});
        for (std::size_t i = 0; i < chosen.size(); ++i) {
            auto const x = Gap + static_cast<unsigned int>(i % Columns) * (cell.width + Gap);
            auto const y = Gap + static_cast<unsigned int>(i / Columns) * (cell.height + TitleHeight + Gap);
            Picture const& picture = chosen[i]->picture;
            DrawTitle(sheet, x, y, cell.width, TitleHeight, chosen[i]->title);
            Canvas(sheet).DrawPicture(picture, x, y + TitleHeight, picture.size.width, picture.size.height);
        }
        file_.Write(ToPng(sheet));
    }
    file_.Close();
}

}  // namespace qel::host
