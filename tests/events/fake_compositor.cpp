// A Wayland compositor with only a seat and ext_idle_notifier_v1 (with
// --kde-idle the older org_kde_kwin_idle instead). Its only input is SIGUSR1,
// the user touching the mouse. Like a real one, it says "idled" once an idle
// notification's timeout passes without input and "resumed" at the next input.
// On standard output it says "ready SOCKET" once clients can connect.

#include <wayland-server.h>

#include "ext-idle-notify-v1-server-protocol.h"
#include "kde-idle-server-protocol.h"

#include <csignal>
#include <cstdio>
#include <cstring>

namespace {

bool g_kde = false;
wl_resource *g_notification = nullptr; // or org_kde_kwin_idle_timeout; the test asks for one
wl_event_source *g_idleTimer = nullptr;
int g_timeout = 0; // ms

void destroy(wl_client *, wl_resource *resource)
{
    wl_resource_destroy(resource);
}

void created(wl_client *client, const wl_interface *interface, wl_resource *parent, uint32_t id,
             const void *implementation, uint32_t timeout)
{
    g_notification = wl_resource_create(client, interface, wl_resource_get_version(parent), id);
    wl_resource_set_implementation(g_notification, implementation, nullptr,
                                   [](wl_resource *) { g_notification = nullptr; });
    g_timeout = int(timeout);
    wl_event_source_timer_update(g_idleTimer, g_timeout);
}

const struct ext_idle_notification_v1_interface notificationImplementation = {destroy};

void getIdleNotification(wl_client *client, wl_resource *notifier, uint32_t id, uint32_t timeout,
                         wl_resource *)
{
    created(client, &ext_idle_notification_v1_interface, notifier, id, &notificationImplementation,
            timeout);
}

const struct org_kde_kwin_idle_timeout_interface kdeTimeoutImplementation = {
    destroy, [](wl_client *, wl_resource *) {}};

void getIdleTimeout(wl_client *client, wl_resource *idle, uint32_t id, wl_resource *,
                    uint32_t timeout)
{
    created(client, &org_kde_kwin_idle_timeout_interface, idle, id, &kdeTimeoutImplementation,
            timeout);
}

const struct ext_idle_notifier_v1_interface notifierImplementation = {destroy, getIdleNotification};
const struct org_kde_kwin_idle_interface kdeIdleImplementation = {getIdleTimeout};

// A global's interface and requests (none for the seat: the source only names it).
struct Global {
    const wl_interface *interface;
    const void *implementation;
};
Global g_seat{&wl_seat_interface, nullptr};
Global g_notifier{&ext_idle_notifier_v1_interface, &notifierImplementation};
Global g_kdeIdle{&org_kde_kwin_idle_interface, &kdeIdleImplementation};

void bind(wl_client *client, void *data, uint32_t version, uint32_t id)
{
    const auto *global = static_cast<Global *>(data);
    wl_resource *resource = wl_resource_create(client, global->interface, int(version), id);
    wl_resource_set_implementation(resource, global->implementation, nullptr, nullptr);
}

int idled(void *)
{
    if (g_notification)
        g_kde ? org_kde_kwin_idle_timeout_send_idle(g_notification)
              : ext_idle_notification_v1_send_idled(g_notification);
    return 0;
}

int input(int, void *)
{
    if (g_notification)
        g_kde ? org_kde_kwin_idle_timeout_send_resumed(g_notification)
              : ext_idle_notification_v1_send_resumed(g_notification);
    wl_event_source_timer_update(g_idleTimer, g_timeout);
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    g_kde = argc > 1 && std::strcmp(argv[1], "--kde-idle") == 0;
    wl_display *display = wl_display_create();
    const char *socket = wl_display_add_socket_auto(display);
    if (!socket)
        return 1;
    wl_global_create(display, &wl_seat_interface, 1, &g_seat, bind);
    Global *idle = g_kde ? &g_kdeIdle : &g_notifier;
    wl_global_create(display, idle->interface, 1, idle, bind);
    wl_event_loop *loop = wl_display_get_event_loop(display);
    g_idleTimer = wl_event_loop_add_timer(loop, idled, nullptr);
    wl_event_loop_add_signal(loop, SIGUSR1, input, nullptr);
    std::printf("ready %s\n", socket);
    std::fflush(stdout);
    wl_display_run(display); // until the test ends it
}
