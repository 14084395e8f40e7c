// A camera for the tests: serves the H.264 pictures of an mp4 file over RTSP on a free port of this machine, each time
// from the start and at their own pace. Prints the address, and runs until its standard input is closed.
#include <gst/gst.h>
#include <gst/rtsp-server/rtsp-server.h>

#include <cstdio>
#include <string>

namespace {

const char k_path[] = "/camera";

gboolean quit_at_end(GIOChannel*, GIOCondition, gpointer loop) {
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return FALSE;
}

void mount(GstRTSPServer* server, const std::string& clip) {
    GstRTSPMediaFactory* factory = gst_rtsp_media_factory_new();
    const std::string line = "( filesrc location=\"" + clip + "\" ! qtdemux ! rtph264pay name=pay0 )";
    gst_rtsp_media_factory_set_launch(factory, line.c_str());
    GstRTSPMountPoints* mounts = gst_rtsp_server_get_mount_points(server);
    gst_rtsp_mount_points_add_factory(mounts, k_path, factory);
    g_object_unref(mounts);
}

}  // namespace

int main(int count, char** arguments) {
    gst_init(&count, &arguments);
    if (count != 2) {
        std::fprintf(stderr, "usage: rtsp_camera CLIP.mp4\n");
        return 2;
    }
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    GstRTSPServer* server = gst_rtsp_server_new();
    gst_rtsp_server_set_address(server, "127.0.0.1");
    gst_rtsp_server_set_service(server, "0");
    mount(server, arguments[1]);
    if (gst_rtsp_server_attach(server, nullptr) == 0) {
        std::fprintf(stderr, "rtsp_camera: no port to listen on\n");
        return 3;
    }
    std::printf("rtsp://127.0.0.1:%d%s\n", gst_rtsp_server_get_bound_port(server), k_path);
    std::fflush(stdout);
    GIOChannel* input = g_io_channel_unix_new(0);
    g_io_add_watch(input, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP), quit_at_end, loop);
    g_main_loop_run(loop);
    g_io_channel_unref(input);
    g_object_unref(server);
    g_main_loop_unref(loop);
    return 0;
}
