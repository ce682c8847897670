// Starts a program on the X display named by DISPLAY and measures, from outside, how long it takes
// to show its window, and how much memory it took to get there.
//
//   vantorel-bench-startup [--settle MS] [--timeout MS] -- PROGRAM [ARGUMENT...]
//
// The clock starts just before the program is started. "Mapped" is when the X server maps the
// program's first top-level window; "shown" is when something is first drawn into a mapped
// top-level window (the DAMAGE extension tells), which is what a person sees; the processor time
// the program had used by then is given beside it. After the window is
// shown the probe waits MS milliseconds (1000 by default) for the program to settle, reads its
// peak resident size (VmHWM) and its current one (VmRSS), asks it to quit with SIGTERM and prints
// one line of JSON. Nothing else may draw on the display meanwhile: use a display of its own.

#include <xcb/damage.h>
#include <xcb/xcb.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fstream>
#include <memory>
#include <poll.h>
#include <set>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

double nowMs()
{
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return double(ts.tv_sec) * 1e3 + double(ts.tv_nsec) / 1e6;
}

long statusKilobytes(pid_t pid, const char *key)
{
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    std::string line;
    const std::string prefix = std::string(key) + ":";
    while (std::getline(status, line)) {
        if (line.compare(0, prefix.size(), prefix) == 0)
            return std::strtol(line.c_str() + prefix.size(), nullptr, 10);
    }
    return -1;
}

// The processor time the program's threads have had so far, in milliseconds (the scheduler's own
// nanosecond count, /proc/PID/task/TID/schedstat). On a busy machine the wall-clock figures
// include waiting for a processor; this one does not.
double cpuMs(pid_t pid)
{
    const std::string tasks = "/proc/" + std::to_string(pid) + "/task";
    std::unique_ptr<DIR, decltype(&closedir)> dir(opendir(tasks.c_str()), &closedir);
    if (!dir)
        return -1;
    double total = 0;
    while (const dirent *entry = readdir(dir.get())) {
        if (entry->d_name[0] == '.')
            continue;
        std::ifstream stat(tasks + "/" + entry->d_name + "/schedstat");
        double runNs = 0;
        if (stat >> runNs)
            total += runNs / 1e6;
    }
    return total;
}

[[noreturn]] void fail(const char *message)
{
    std::fprintf(stderr, "vantorel-bench-startup: %s\n", message);
    std::exit(2);
}

void stopChild(pid_t pid)
{
    kill(pid, SIGTERM);
    for (int i = 0; i < 500; ++i) {
        if (waitpid(pid, nullptr, WNOHANG) == pid)
            return;
        usleep(10000);
    }
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
}

} // namespace

int main(int argc, char **argv)
{
    int settleMs = 1000;
    int timeoutMs = 30000;
    int first = 1;
    for (; first < argc; ++first) {
        const std::string arg = argv[first];
        if (arg == "--settle" && first + 1 < argc)
            settleMs = std::atoi(argv[++first]);
        else if (arg == "--timeout" && first + 1 < argc)
            timeoutMs = std::atoi(argv[++first]);
        else if (arg == "--") {
            ++first;
            break;
        } else
            fail("usage: vantorel-bench-startup [--settle MS] [--timeout MS] -- PROGRAM [ARG...]");
    }
    if (first >= argc)
        fail("no program given");

    int screenNumber = 0;
    xcb_connection_t *connection = xcb_connect(nullptr, &screenNumber);
    if (xcb_connection_has_error(connection))
        fail("cannot connect to the X display");
    const xcb_setup_t *setup = xcb_get_setup(connection);
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(setup);
    for (int i = 0; i < screenNumber; ++i)
        xcb_screen_next(&screens);
    const xcb_window_t root = screens.data->root;

    const xcb_query_extension_reply_t *damage = xcb_get_extension_data(connection, &xcb_damage_id);
    if (!damage || !damage->present)
        fail("the X server has no DAMAGE extension");
    std::free(xcb_damage_query_version_reply(connection, xcb_damage_query_version(connection, 1, 1),
                                             nullptr));
    const uint8_t damageNotify = damage->first_event + XCB_DAMAGE_NOTIFY;

    const uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection, root, XCB_CW_EVENT_MASK, &mask);
    // A round trip, so the server listens before the program starts.
    std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));

    const double start = nowMs();
    const pid_t pid = fork();
    if (pid < 0)
        fail("cannot fork");
    if (pid == 0) {
        execvp(argv[first], argv + first);
        std::fprintf(stderr, "vantorel-bench-startup: cannot run %s: %s\n", argv[first],
                     std::strerror(errno));
        _exit(127);
    }

    std::set<xcb_window_t> topLevels;
    std::set<xcb_window_t> mapped;
    double mappedAt = -1;
    double shownAt = -1;
    double shownCpu = -1;
    const int fd = xcb_get_file_descriptor(connection);
    while (shownAt < 0) {
        if (nowMs() - start > timeoutMs) {
            stopChild(pid);
            fail("the program showed no window in time");
        }
        if (waitpid(pid, nullptr, WNOHANG) == pid)
            fail("the program ended before it showed a window");
        std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> event(
            xcb_poll_for_event(connection), &std::free);
        if (!event) {
            if (xcb_connection_has_error(connection))
                fail("lost the X display");
            pollfd p{fd, POLLIN, 0};
            poll(&p, 1, 20);
            continue;
        }
        const uint8_t type = event->response_type & 0x7f;
        if (type == XCB_CREATE_NOTIFY) {
            const auto *created = reinterpret_cast<xcb_create_notify_event_t *>(event.get());
            if (created->parent != root || created->override_redirect)
                continue;
            // Watch for drawing from the moment the window exists, so no early frame is missed.
            topLevels.insert(created->window);
            xcb_damage_create(connection, xcb_generate_id(connection), created->window,
                              XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
            xcb_flush(connection);
        } else if (type == XCB_MAP_NOTIFY) {
            const auto *map = reinterpret_cast<xcb_map_notify_event_t *>(event.get());
            if (!topLevels.count(map->window))
                continue;
            mapped.insert(map->window);
            if (mappedAt < 0)
                mappedAt = nowMs();
        } else if (type == damageNotify) {
            const auto *notify = reinterpret_cast<xcb_damage_notify_event_t *>(event.get());
            if (mapped.count(notify->drawable)) {
                shownAt = nowMs();
                shownCpu = cpuMs(pid);
            }
        }
    }

    usleep(useconds_t(settleMs) * 1000);
    const long peak = statusKilobytes(pid, "VmHWM");
    const long resident = statusKilobytes(pid, "VmRSS");
    stopChild(pid);
    xcb_disconnect(connection);

    std::printf("{\"mapped_ms\": %.3f, \"shown_ms\": %.3f, \"shown_cpu_ms\": %.3f, "
                "\"peak_rss_kb\": %ld, \"rss_kb\": %ld}\n",
                mappedAt - start, shownAt - start, shownCpu, peak, resident);
    return 0;
}
