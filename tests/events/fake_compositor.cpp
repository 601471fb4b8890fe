// A Wayland compositor with only what the idle source needs: a seat and
// ext_idle_notifier_v1 (with --kde-idle the older org_kde_kwin_idle instead,
// with --without-idle-notify the seat alone). It shows nothing and has no
// input; the test says when the user goes idle or comes back, one command a
// line on standard input:
//   idled, resumed   sent to every idle notification (or timeout)
//   quit             ends the compositor (so does the end of input)
// On standard output it says "ready SOCKET" once clients can connect, and
// "notification TIMEOUT" for every idle notification a client asks for.

#include <wayland-server.h>

#include "ext-idle-notify-v1-server-protocol.h"
#include "kde-idle-server-protocol.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

wl_display *g_display = nullptr;
std::vector<wl_resource *> g_notifications; // and org_kde_kwin_idle_timeouts
std::string g_input;

void unused(wl_client *, wl_resource *, uint32_t)
{
}
void destroy(wl_client *, wl_resource *resource)
{
    wl_resource_destroy(resource);
}

const struct wl_seat_interface seatImplementation = {unused, unused, unused, destroy};

void bindSeat(wl_client *client, void *, uint32_t version, uint32_t id)
{
    wl_resource *resource = wl_resource_create(client, &wl_seat_interface, int(version), id);
    wl_resource_set_implementation(resource, &seatImplementation, nullptr, nullptr);
}

const struct ext_idle_notification_v1_interface notificationImplementation = {destroy};

void notificationGone(wl_resource *resource)
{
    g_notifications.erase(std::remove(g_notifications.begin(), g_notifications.end(), resource),
                          g_notifications.end());
}

void getIdleNotification(wl_client *client, wl_resource *notifier, uint32_t id, uint32_t timeout,
                         wl_resource *)
{
    wl_resource *resource = wl_resource_create(client, &ext_idle_notification_v1_interface,
                                               wl_resource_get_version(notifier), id);
    wl_resource_set_implementation(resource, &notificationImplementation, nullptr,
                                   notificationGone);
    g_notifications.push_back(resource);
    std::printf("notification %u\n", timeout);
    std::fflush(stdout);
}

const struct ext_idle_notifier_v1_interface notifierImplementation = {destroy, getIdleNotification};

void bindNotifier(wl_client *client, void *, uint32_t version, uint32_t id)
{
    wl_resource *resource =
        wl_resource_create(client, &ext_idle_notifier_v1_interface, int(version), id);
    wl_resource_set_implementation(resource, &notifierImplementation, nullptr, nullptr);
}

const struct org_kde_kwin_idle_timeout_interface kdeTimeoutImplementation = {
    destroy, [](wl_client *, wl_resource *) {}};

void getIdleTimeout(wl_client *client, wl_resource *idle, uint32_t id, wl_resource *,
                    uint32_t timeout)
{
    wl_resource *resource = wl_resource_create(client, &org_kde_kwin_idle_timeout_interface,
                                               wl_resource_get_version(idle), id);
    wl_resource_set_implementation(resource, &kdeTimeoutImplementation, nullptr, notificationGone);
    g_notifications.push_back(resource);
    std::printf("notification %u\n", timeout);
    std::fflush(stdout);
}

const struct org_kde_kwin_idle_interface kdeIdleImplementation = {getIdleTimeout};

void bindKdeIdle(wl_client *client, void *, uint32_t version, uint32_t id)
{
    wl_resource *resource =
        wl_resource_create(client, &org_kde_kwin_idle_interface, int(version), id);
    wl_resource_set_implementation(resource, &kdeIdleImplementation, nullptr, nullptr);
}

bool isKdeTimeout(wl_resource *resource)
{
    return wl_resource_instance_of(resource, &org_kde_kwin_idle_timeout_interface,
                                   &kdeTimeoutImplementation);
}

void command(const std::string &line)
{
    if (line == "quit") {
        wl_display_terminate(g_display);
    } else if (line == "idled") {
        for (wl_resource *n : g_notifications)
            isKdeTimeout(n) ? org_kde_kwin_idle_timeout_send_idle(n)
                            : ext_idle_notification_v1_send_idled(n);
    } else if (line == "resumed") {
        for (wl_resource *n : g_notifications)
            isKdeTimeout(n) ? org_kde_kwin_idle_timeout_send_resumed(n)
                            : ext_idle_notification_v1_send_resumed(n);
    }
    wl_display_flush_clients(g_display);
}

int readInput(int fd, uint32_t, void *)
{
    char buffer[256];
    const ssize_t n = ::read(fd, buffer, sizeof buffer);
    if (n <= 0) {
        wl_display_terminate(g_display);
        return 0;
    }
    g_input.append(buffer, size_t(n));
    for (size_t end; (end = g_input.find('\n')) != std::string::npos;) {
        command(g_input.substr(0, end));
        g_input.erase(0, end + 1);
    }
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    const char *option = argc > 1 ? argv[1] : "";
    const bool withIdleNotify =
        std::strcmp(option, "--without-idle-notify") != 0 && std::strcmp(option, "--kde-idle") != 0;
    g_display = wl_display_create();
    const char *socket = wl_display_add_socket_auto(g_display);
    if (!socket) {
        std::fprintf(stderr, "fake_compositor: no socket (is XDG_RUNTIME_DIR set?)\n");
        return 1;
    }
    wl_global_create(g_display, &wl_seat_interface, 1, nullptr, bindSeat);
    if (withIdleNotify)
        wl_global_create(g_display, &ext_idle_notifier_v1_interface, 1, nullptr, bindNotifier);
    if (std::strcmp(option, "--kde-idle") == 0)
        wl_global_create(g_display, &org_kde_kwin_idle_interface, 1, nullptr, bindKdeIdle);
    wl_event_loop_add_fd(wl_display_get_event_loop(g_display), 0, WL_EVENT_READABLE, readInput,
                         nullptr);
    std::printf("ready %s\n", socket);
    std::fflush(stdout);
    wl_display_run(g_display);
    wl_display_destroy_clients(g_display);
    wl_display_destroy(g_display);
    return 0;
}
