#include <charconv>

#include "api/routes.hpp"

namespace qel::serve::api {
namespace {

constexpr unsigned int MaxWidth = 8192;

LookOptions ReadOptions(http::Request const& request) {
    RequireQueryAmong(request, {"annotated", "width"});
    LookOptions options;
    if (auto const annotated = request.GetQuery("annotated")) {
        if (*annotated != "0" && *annotated != "1") throw http::Problem(400, "the query 'annotated' is 0 or 1");
        options.annotated = *annotated == "1";
    }
    if (auto const width = request.GetQuery("width")) {
        auto const [end, error] = std::from_chars(width->data(), width->data() + width->size(), options.maxWidth);
        if (error != std::errc() || end != width->data() + width->size() || options.maxWidth == 0 ||
            options.maxWidth > MaxWidth) {
            throw http::Problem(400, "the query 'width' is a number of pixels from 1 to " + std::to_string(MaxWidth));
        }
    }
    return options;
}

std::string ToText(std::vector<std::uint8_t> const& bytes) { return {bytes.begin(), bytes.end()}; }

/// One stream that is being looked at.
class Look {
public:
    Look(Streams streams, std::string id, LookOptions options)
        : streams_(std::move(streams)), id_(std::move(id)), options_(options) {}

    void Start(std::function<void()> wake) { viewer_ = streams_.look(id_, options_, std::move(wake)); }
    bool IsAlive() const { return viewer_ && viewer_->IsAlive(); }

    /// A picture that was not taken before; null while there is none.
    std::shared_ptr<LivePicture const> Take() {
        if (!viewer_ || viewer_->GetSequence() == last_) return nullptr;
        auto picture = viewer_->Draw();
        if (!picture || picture->sequence == last_) return nullptr;
        last_ = picture->sequence;
        return picture;
    }

    std::string const& GetId() const noexcept { return id_; }

private:
    Streams streams_;
    std::string id_;
    LookOptions options_;
    std::shared_ptr<Viewer> viewer_;
    std::uint64_t last_ = 0;
};

/// The first picture that comes.
class OnePicture final : public http::LaterResponse {
public:
    explicit OnePicture(Look look) : look_(std::move(look)) {}

    void Start(std::function<void()> wake) override { look_.Start(std::move(wake)); }

    std::optional<http::Response> Get(bool last) override {
        if (auto const picture = look_.Take()) {
            http::Response response;
            response.contentType = "image/jpeg";
            response.body = ToText(picture->jpeg);
            return response;
        }
        if (!look_.IsAlive()) throw http::Problem(404, "the stream '" + look_.GetId() + "' is gone");
        if (last) {
            throw http::Problem(503, "the stream '" + look_.GetId() +
                                         "' has no picture yet; its state tells why: GET "
                                         "/api/streams/" +
                                         look_.GetId())
                .With("Retry-After", "2");
        }
        return std::nullopt;
    }

private:
    Look look_;
};

/// All pictures that the client is fast enough for.
class Pictures final : public http::BodyStream {
public:
    static constexpr char ContentType[] = "multipart/x-mixed-replace; boundary=qel";

    explicit Pictures(Look look) : look_(std::move(look)) {}

    void Start(std::function<void()> wake) override { look_.Start(std::move(wake)); }

    std::optional<std::string> Next(bool) override {
        auto const picture = look_.Take();
        if (!picture) {
            if (!look_.IsAlive()) return std::nullopt;
            return std::exchange(isBegun_, true) ? "" : "--qel\r\n";
        }
        // The boundary goes behind each picture: browsers show it once they know that it is complete.
        std::string part = std::exchange(isBegun_, true) ? "" : "--qel\r\n";
        part += "Content-Type: image/jpeg\r\nContent-Length: " + std::to_string(picture->jpeg.size()) + "\r\n\r\n";
        part.append(picture->jpeg.begin(), picture->jpeg.end());
        part += "\r\n--qel\r\n";
        return part;
    }

private:
    Look look_;
    bool isBegun_ = false;
};

}  // namespace

void AddPictureRoutes(http::Router& router, Services const& services) {
    using Work = http::Route::Work;
    router.Add({.method = "GET",
                .pattern = "/api/streams/{id}/frame.jpg",
                .answer =
                    [services](http::Request const& request) {
                        LookOptions const options = ReadOptions(request);
                        http::Response response;
                        response.later = std::make_unique<OnePicture>(
                            Look(services.streams, GetStreamId(request, services), options));
                        return response;
                    },
                .work = Work::Slow});
    router.Add({.method = "GET",
                .pattern = "/api/streams/{id}/mjpeg",
                .answer =
                    [services](http::Request const& request) {
                        LookOptions const options = ReadOptions(request);
                        http::Response response;
                        response.contentType = Pictures::ContentType;
                        response.stream =
                            std::make_unique<Pictures>(Look(services.streams, GetStreamId(request, services), options));
                        return response;
                    },
                .work = Work::Slow});
}

}  // namespace qel::serve::api
