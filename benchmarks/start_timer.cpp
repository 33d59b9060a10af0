// Starts a program on an empty X display and prints the milliseconds until its first picture is on
// the screen. Without a window manager the window lies at the origin; what it shows first is the
// flush of its first whole painting.
// Usage: tessaril_bench_start PROGRAM

#include <spawn.h>
#include <sys/wait.h>
#include <xcb/xcb.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <thread>

extern char** environ;

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::int16_t probe = 100; // inside any window of these programs
constexpr std::chrono::seconds patience(60);

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};

/// The pixel of the screen at the probe.
std::uint32_t pixel(xcb_connection_t* display, xcb_window_t root) {
    const auto cookie =
        xcb_get_image(display, XCB_IMAGE_FORMAT_Z_PIXMAP, root, probe, probe, 1, 1, ~0U);
    const std::unique_ptr<xcb_get_image_reply_t, Free> reply(
        xcb_get_image_reply(display, cookie, nullptr));
    if (!reply) std::abort();
    const std::uint8_t* data = xcb_get_image_data(reply.get());
    return data[0] | data[1] << 8 | data[2] << 16;
}

} // namespace

int main(int, char* argv[]) {
    xcb_connection_t* display = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(display)) return EXIT_FAILURE;
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(display)).data->root;
    const std::uint32_t empty = pixel(display, root);

    const auto start = Clock::now();
    pid_t process = 0;
    if (posix_spawn(&process, argv[1], nullptr, nullptr, argv + 1, environ) != 0)
        return EXIT_FAILURE;
    bool shown = false;
    while (!shown && Clock::now() - start < patience) {
        shown = pixel(display, root) != empty;
        if (!shown) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    const std::chrono::duration<double, std::milli> taken = Clock::now() - start;

    kill(process, SIGTERM);
    waitpid(process, nullptr, 0);
    while (shown && pixel(display, root) != empty && Clock::now() - start < patience) {
    }
    xcb_disconnect(display);
    if (!shown) return EXIT_FAILURE;
    std::printf("%.2f\n", taken.count());
}
