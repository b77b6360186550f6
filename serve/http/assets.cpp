#include "http/assets.hpp"

#include <algorithm>
#include <cerrno>
#include <sstream>
#include <utility>
#include <vector>

#include <boost/filesystem/operations.hpp>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "error.hpp"
#include "http/problem.hpp"
#include "qel/system/get_library_path.hpp"

namespace qel::serve::http {
namespace {

using system::Descriptor;

/// A file, piece by piece.
class FileStream final : public BodyStream {
public:
    FileStream(Descriptor file, std::uint64_t size) : file_(std::move(file)), left_(size) {}

    void Start(std::function<void()>) override {}

    std::optional<std::string> Next(bool) override {
        if (left_ == 0) return std::nullopt;
        std::string piece(static_cast<std::size_t>(std::min<std::uint64_t>(left_, PieceSize)), '\0');
        ssize_t count = 0;
        do {
            count = read(file_.Get(), piece.data(), piece.size());
        } while (count < 0 && errno == EINTR);
        // The length has been promised: a file that was cut off meanwhile ends the connection.
        if (count <= 0) throw host::Error("a file ends before its end");
        piece.resize(static_cast<std::size_t>(count));
        left_ -= static_cast<std::uint64_t>(count);
        return piece;
    }

private:
    static constexpr std::size_t PieceSize = 64U << 10;

    Descriptor file_;
    std::uint64_t left_;
};

Problem MakeNotFound() { return {404, "there is nothing at this path; /api/openapi.json tells what there is"}; }

/// Opens a file below a folder, one segment after the other, so that nothing that is changed meanwhile leads out of it.
Descriptor Open(int folder, std::string_view path) {
    Descriptor opened;
    int from = folder;
    while (true) {
        auto const slash = path.find('/');
        std::string const segment(path.substr(0, slash));
        // Hidden files are nobody's business; this takes "." and ".." as well.
        if (segment.empty() || segment.front() == '.') throw MakeNotFound();
        if (segment.find_first_of(std::string_view("\\\0", 2)) != std::string::npos) throw MakeNotFound();
        bool const isLast = slash == std::string_view::npos;
        // A pipe must not make anybody wait.
        int const flags = O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | (isLast ? 0 : O_DIRECTORY);
        Descriptor next(openat(from, segment.c_str(), flags));
        if (!next && (errno == EMFILE || errno == ENFILE || errno == ENOMEM)) {
            throw Problem(503, "too many files are open just now").With("Retry-After", "1");
        }
        if (!next) throw MakeNotFound();
        opened = std::move(next);
        if (isLast) return opened;
        from = opened.Get();
        path.remove_prefix(slash + 1);
    }
}

/// Another one for each state of a file.
std::string MakeTag(struct stat const& status) {
    std::ostringstream tag;
    tag << '"' << status.st_ino << '-' << status.st_size << '-' << status.st_mtim.tv_sec << '.'
        << status.st_mtim.tv_nsec << '"';
    return tag.str();
}

/// Whether a header If-None-Match names the tag.
bool Names(std::string_view header, std::string_view tag) {
    return Trim(header) == "*" || header.find(tag) != std::string_view::npos;
}

}  // namespace

std::string GetMediaType(std::string_view file) {
    static constexpr std::pair<std::string_view, char const*> Types[] = {
        {".html", "text/html; charset=utf-8"},
        {".js", "text/javascript; charset=utf-8"},
        {".mjs", "text/javascript; charset=utf-8"},
        {".css", "text/css; charset=utf-8"},
        {".json", "application/json"},
        {".map", "application/json"},
        {".webmanifest", "application/manifest+json"},
        {".svg", "image/svg+xml"},
        {".png", "image/png"},
        {".jpg", "image/jpeg"},
        {".webp", "image/webp"},
        {".ico", "image/x-icon"},
        {".woff2", "font/woff2"},
        {".wasm", "application/wasm"},
        {".txt", "text/plain; charset=utf-8"},
    };
    std::string const name = ToLower(file);
    for (auto const& [ending, type] : Types) {
        if (name.ends_with(ending)) return type;
    }
    return "application/octet-stream";
}

Assets::Assets(boost::filesystem::path const& folder) {
    if (folder.empty()) return;
    folder_ = Descriptor(open(folder.c_str(), O_RDONLY | O_CLOEXEC | O_DIRECTORY));
    if (!folder_) throw host::UsageError("'" + folder.string() + "' is no folder of a page that can be read");
}

Response Assets::Get(Request const& request, std::string const& path) const {
    // A build tree has the folder before it has the page.
    if (path.empty() && (!folder_ || faccessat(folder_.Get(), "index.html", F_OK, 0) != 0)) {
        throw Problem(404,
                      "the page is not installed: name its folder with --assets, or build it (target qel_page); "
                      "/api/openapi.json tells what there is besides");
    }
    if (!folder_) throw MakeNotFound();
    std::string const file = path.empty() ? "index.html" : path;
    Descriptor opened = Open(folder_.Get(), file);
    struct stat status {};
    if (fstat(opened.Get(), &status) != 0 || !S_ISREG(status.st_mode)) throw MakeNotFound();
    Response response;
    std::string const tag = MakeTag(status);
    response.headers = {
        {"ETag", tag},
        {"Cache-Control", file.starts_with("assets/") ? "public, max-age=31536000, immutable" : "no-cache"}};
    if (auto const known = request.GetHeader("if-none-match"); known && Names(*known, tag)) {
        response.status = 304;
        return response;
    }
    response.contentType = GetMediaType(file);
    auto const size = static_cast<std::uint64_t>(status.st_size);
    response.stream = std::make_unique<FileStream>(std::move(opened), size);
    response.streamSize = size;
    return response;
}

boost::filesystem::path FindPage() {
    boost::system::error_code ignored;
    auto folder = system::GetLibraryPath("qel_algorithm").parent_path();
    for (int up = 0; up < 3 && !folder.empty(); ++up, folder = folder.parent_path()) {
        auto page = folder.parent_path() / "share" / "qel" / "page";
        if (boost::filesystem::is_directory(page, ignored)) return page;
    }
    return {};
}

}  // namespace qel::serve::http
