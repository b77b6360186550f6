#include "annotation_sink.hpp"

#include <utility>

#include "canvas.hpp"
#include "overlay.hpp"

namespace qel::host {

void AnnotationSink::Take(AnalysedFrame const& analysed) {
    Picture picture = ToPicture(analysed.frame);
    if (backdrop_) backdrop_(picture);
    DrawObjects(picture, picture.size, analysed.result.objects);
    if (picture.size != size_) picture = Letterbox(picture, size_);
    writer_.Write(std::move(picture), analysed.frame.GetTimestamp().time_since_epoch());
}

}  // namespace qel::host
