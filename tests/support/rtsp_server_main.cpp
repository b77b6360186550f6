// An RTSP server with one camera, rtsp://127.0.0.1:PORT/camera, that is made to fail on command.
//
// usage: qel_test_rtsp_server [--port N] [--codec h264|jpeg] [--transport tcp|udp] [--fps N] [--video FILE]
// Port 0, the default, lets the system choose. Says "listening PORT" when it can be reached. Reads commands, one a
// line: "stall", "go", "size WIDTH HEIGHT", "end". Ends with its input.

#include <cstdio>
#include <iostream>
#include <map>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <string>

#include <gst/rtsp-server/rtsp-server.h>

#include "gstreamer.hpp"
#include "support/frame_feed.hpp"

namespace qel::test {
namespace {

using host::GstPtr;

struct Options {
    std::string port = "0";
    std::string codec = "h264";
    std::string transport = "udp";
    std::string fps = "25";
    std::string video;
};

Options ReadOptions(int argc, char** argv) {
    Options options;
    std::map<std::string, std::string*> const known{{"--port", &options.port},
                                                    {"--codec", &options.codec},
                                                    {"--transport", &options.transport},
                                                    {"--fps", &options.fps},
                                                    {"--video", &options.video}};
    for (int i = 1; i < argc; i += 2) {
        auto const option = known.find(argv[i]);
        if (option == known.end() || i + 1 == argc) throw std::runtime_error(std::string("wrong argument ") + argv[i]);
        *option->second = argv[i + 1];
    }
    return options;
}

/// The size filter is what the command "size" changes.
std::string DescribeMedia(std::string const& codec) {
    std::string const start = "( appsrc name=feed ! videoscale ! capsfilter name=size ! videoconvert ! ";
    if (codec == "jpeg") return start + "video/x-raw,format=I420 ! jpegenc ! rtpjpegpay name=pay0 pt=26 )";
    return start +
           "video/x-raw,format=I420 ! x264enc tune=zerolatency speed-preset=ultrafast key-int-max=10 threads=1 ! "
           "rtph264pay name=pay0 pt=96 config-interval=-1 )";
}

class Camera {
public:
    explicit Camera(Options const& options)
        : feed_(options.video, static_cast<unsigned int>(std::stoul(options.fps))), server_(gst_rtsp_server_new()) {
        gst_rtsp_server_set_address(server_, "127.0.0.1");
        gst_rtsp_server_set_service(server_, options.port.c_str());
        GstRTSPMediaFactory* const factory = gst_rtsp_media_factory_new();
        gst_rtsp_media_factory_set_launch(factory, DescribeMedia(options.codec).c_str());
        gst_rtsp_media_factory_set_shared(factory, TRUE);
        gst_rtsp_media_factory_set_protocols(
            factory, options.transport == "tcp" ? GST_RTSP_LOWER_TRANS_TCP : GST_RTSP_LOWER_TRANS_UDP);
        g_signal_connect(factory, "media-configure", G_CALLBACK(OnMedia), this);
        GstRTSPMountPoints* const mounts = gst_rtsp_server_get_mount_points(server_);
        gst_rtsp_mount_points_add_factory(mounts, "/camera", factory);
        g_object_unref(mounts);
    }
    Camera(Camera const&) = delete;
    Camera& operator=(Camera const&) = delete;
    ~Camera() { g_object_unref(server_); }

    /// Begins to listen; false when the port is taken.
    bool Listen() { return gst_rtsp_server_attach(server_, nullptr) != 0; }
    int GetPort() { return gst_rtsp_server_get_bound_port(server_); }

    void Obey(std::string const& line) {
        std::istringstream words(line);
        std::string command;
        words >> command;
        if (command == "stall" || command == "go") feed_.Stall(command == "stall");
        if (command == "end") feed_.End();
        if (command == "size") {
            int width = 0;
            int height = 0;
            words >> width >> height;
            SetSize(width, height);
        }
    }

private:
    static void OnMedia(GstRTSPMediaFactory*, GstRTSPMedia* media, gpointer camera) {
        static_cast<Camera*>(camera)->Configure(media);
    }

    void Configure(GstRTSPMedia* media) {
        GstPtr<GstElement> const bin(gst_rtsp_media_get_element(media));
        GstPtr<GstElement> const source(gst_bin_get_by_name(GST_BIN(bin.get()), "feed"));
        {
            std::lock_guard<std::mutex> const lock(mutex_);
            size_.reset(gst_bin_get_by_name(GST_BIN(bin.get()), "size"));
            if (caps_) g_object_set(size_.get(), "caps", caps_.get(), nullptr);
        }
        feed_.Serve(GST_APP_SRC(source.get()));
    }

    void SetSize(int width, int height) {
        std::lock_guard<std::mutex> const lock(mutex_);
        caps_.reset(
            gst_caps_new_simple("video/x-raw", "width", G_TYPE_INT, width, "height", G_TYPE_INT, height, nullptr));
        if (size_) g_object_set(size_.get(), "caps", caps_.get(), nullptr);
    }

    FrameFeed feed_;
    GstRTSPServer* server_;
    // Clients come on threads of the server's, commands on the main one.
    std::mutex mutex_;
    GstPtr<GstElement> size_;
    GstPtr<GstCaps> caps_;
};

struct Commands {
    Camera& camera;
    GMainLoop* loop;
};

gboolean OnInput(GIOChannel* channel, GIOCondition, gpointer data) {
    auto& commands = *static_cast<Commands*>(data);
    gchar* line = nullptr;
    if (g_io_channel_read_line(channel, &line, nullptr, nullptr, nullptr) != G_IO_STATUS_NORMAL) {
        g_main_loop_quit(commands.loop);
        return FALSE;
    }
    GstPtr<gchar> const owner(line);
    commands.camera.Obey(line);
    return TRUE;
}

void Main(int argc, char** argv) {
    host::InitialiseGStreamer();
    Camera camera(ReadOptions(argc, argv));
    // A port that a killed server had may stay taken for a moment.
    for (int tries = 0; !camera.Listen(); ++tries) {
        if (tries == 100) throw std::runtime_error("cannot listen");
        g_usleep(100000);
    }
    std::cout << "listening " << camera.GetPort() << std::endl;
    GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
    Commands commands{camera, loop};
    GIOChannel* const input = g_io_channel_unix_new(0);
    g_io_add_watch(input, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP), OnInput, &commands);
    g_main_loop_run(loop);
    g_io_channel_unref(input);
    g_main_loop_unref(loop);
}

}  // namespace
}  // namespace qel::test

int main(int argc, char** argv) {
    try {
        qel::test::Main(argc, argv);
        return 0;
    } catch (std::exception const& error) {
        std::cerr << "qel_test_rtsp_server: " << error.what() << "\n";
        return 1;
    }
}
