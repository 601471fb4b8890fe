// A left click at X,Y as a real pointer makes it, through KWin's fake input
// protocol (org_kde_kwin_fake_input), for what only reacts to input events.
//   click X Y
// Built by tests/desktops/checks.sh (build_client) with wayland-scanner's output for the
// protocol beside it.
#include "fake-input-client.h"

#include <linux/input-event-codes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <wayland-client.h>

static struct org_kde_kwin_fake_input *input;

static void global(void *data, struct wl_registry *registry, uint32_t name, const char *interface,
                   uint32_t version)
{
    (void)data;
    if (strcmp(interface, org_kde_kwin_fake_input_interface.name) == 0)
        input = wl_registry_bind(registry, name, &org_kde_kwin_fake_input_interface,
                                 version < 4 ? version : 4);
}

static void global_remove(void *data, struct wl_registry *registry, uint32_t name)
{
    (void)data, (void)registry, (void)name;
}

int main(int argc, char **argv)
{
    if (argc != 3) {
        fprintf(stderr, "usage: click X Y\n");
        return 2;
    }
    struct wl_display *display = wl_display_connect(NULL);
    if (!display) {
        fprintf(stderr, "click: no Wayland display\n");
        return 1;
    }
    static const struct wl_registry_listener listener = {global, global_remove};
    wl_registry_add_listener(wl_display_get_registry(display), &listener, NULL);
    wl_display_roundtrip(display);
    if (!input || org_kde_kwin_fake_input_get_version(input) < 3) {
        fprintf(stderr, "click: the compositor offers no org_kde_kwin_fake_input 3\n");
        return 1;
    }
    org_kde_kwin_fake_input_authenticate(input, "narv tests", "a click on the status item");
    const wl_fixed_t x = wl_fixed_from_int(atoi(argv[1])), y = wl_fixed_from_int(atoi(argv[2]));
    org_kde_kwin_fake_input_pointer_motion_absolute(input, x, y);
    wl_display_roundtrip(display);
    // KWin 5.27 may pass no press on to a surface the pointer has only just
    // entered (the release alone arrives): the caller clicks again until it
    // sees what the click does.
    org_kde_kwin_fake_input_button(input, BTN_LEFT, WL_POINTER_BUTTON_STATE_PRESSED);
    wl_display_roundtrip(display);
    org_kde_kwin_fake_input_button(input, BTN_LEFT, WL_POINTER_BUTTON_STATE_RELEASED);
    wl_display_roundtrip(display);
    wl_display_disconnect(display);
    return 0;
}
