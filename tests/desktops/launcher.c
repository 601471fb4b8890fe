// What a launcher does before it starts a program on Wayland: with its own
// window focused, it asks the compositor (xdg_activation_v1) for a token for
// the program's desktop file and hands it over. Prints the token on a line of
// its own once the window has the keyboard focus (or the seat has no
// keyboard), then keeps the window up until it is ended.
//   launcher APP_ID
// Built by tests/desktops/checks.sh with wayland-scanner's output for
// xdg-shell and xdg-activation-v1 beside it.
#define _GNU_SOURCE
#include "xdg-activation-v1-client.h"
#include "xdg-shell-client.h"

#include <stdio.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>

static struct wl_compositor *compositor;
static struct wl_shm *shm;
static struct xdg_wm_base *wm_base;
static struct xdg_activation_v1 *activation;
static struct wl_seat *seat;
static int configured, focused, no_keyboard;
static uint32_t serial;

static void global(void *data, struct wl_registry *registry, uint32_t name, const char *interface,
                   uint32_t version)
{
    (void)data, (void)version;
    if (strcmp(interface, wl_compositor_interface.name) == 0)
        compositor = wl_registry_bind(registry, name, &wl_compositor_interface, 1);
    else if (strcmp(interface, wl_shm_interface.name) == 0)
        shm = wl_registry_bind(registry, name, &wl_shm_interface, 1);
    else if (strcmp(interface, xdg_wm_base_interface.name) == 0)
        wm_base = wl_registry_bind(registry, name, &xdg_wm_base_interface, 1);
    else if (strcmp(interface, xdg_activation_v1_interface.name) == 0)
        activation = wl_registry_bind(registry, name, &xdg_activation_v1_interface, 1);
    else if (strcmp(interface, wl_seat_interface.name) == 0 && !seat)
        seat = wl_registry_bind(registry, name, &wl_seat_interface, 1);
}
static void global_remove(void *data, struct wl_registry *registry, uint32_t name)
{
    (void)data, (void)registry, (void)name;
}

static void ping(void *data, struct xdg_wm_base *base, uint32_t ping_serial)
{
    (void)data;
    xdg_wm_base_pong(base, ping_serial);
}
static void surface_configure(void *data, struct xdg_surface *surface, uint32_t configure_serial)
{
    (void)data;
    xdg_surface_ack_configure(surface, configure_serial);
    configured = 1;
}

// Only the focus matters: the enter event's serial goes with the token.
static void kb_keymap(void *d, struct wl_keyboard *k, uint32_t f, int32_t fd, uint32_t s)
{
    (void)d, (void)k, (void)f, (void)s;
    close(fd);
}
static void kb_enter(void *d, struct wl_keyboard *k, uint32_t s, struct wl_surface *w,
                     struct wl_array *keys)
{
    (void)d, (void)k, (void)w, (void)keys;
    serial = s;
    focused = 1;
}
static void kb_leave(void *d, struct wl_keyboard *k, uint32_t s, struct wl_surface *w)
{
    (void)d, (void)k, (void)s, (void)w;
    focused = 0;
}
static void kb_key(void *d, struct wl_keyboard *k, uint32_t s, uint32_t t, uint32_t key,
                   uint32_t state)
{
    (void)d, (void)k, (void)s, (void)t, (void)key, (void)state;
}
static void kb_modifiers(void *d, struct wl_keyboard *k, uint32_t s, uint32_t a, uint32_t b,
                         uint32_t c, uint32_t g)
{
    (void)d, (void)k, (void)s, (void)a, (void)b, (void)c, (void)g;
}
static const struct wl_keyboard_listener keyboard_listener = {kb_keymap, kb_enter, kb_leave, kb_key,
                                                              kb_modifiers};

static void capabilities(void *data, struct wl_seat *s, uint32_t caps)
{
    (void)data;
    if (caps & WL_SEAT_CAPABILITY_KEYBOARD)
        wl_keyboard_add_listener(wl_seat_get_keyboard(s), &keyboard_listener, NULL);
    else
        no_keyboard = 1;
}
static void seat_name(void *data, struct wl_seat *s, const char *name)
{
    (void)data, (void)s, (void)name;
}

static void token_done(void *data, struct xdg_activation_token_v1 *token, const char *text)
{
    (void)data, (void)token;
    printf("%s\n", text);
    fflush(stdout);
}

int main(int argc, char **argv)
{
    struct wl_display *display = wl_display_connect(NULL);
    if (argc != 2 || !display) {
        fprintf(stderr, "usage: launcher APP_ID, on a Wayland display\n");
        return 2;
    }
    static const struct wl_registry_listener registry_listener = {global, global_remove};
    wl_registry_add_listener(wl_display_get_registry(display), &registry_listener, NULL);
    wl_display_roundtrip(display);
    if (!compositor || !shm || !wm_base || !activation || !seat) {
        fprintf(stderr, "launcher: the compositor offers no xdg_activation_v1 (or no seat)\n");
        return 1;
    }
    static const struct xdg_wm_base_listener base_listener = {ping};
    static const struct xdg_surface_listener xdg_surface_listener = {surface_configure};
    static const struct wl_seat_listener seat_listener = {capabilities, seat_name};
    xdg_wm_base_add_listener(wm_base, &base_listener, NULL);
    wl_seat_add_listener(seat, &seat_listener, NULL);

    struct wl_surface *surface = wl_compositor_create_surface(compositor);
    struct xdg_surface *xdg = xdg_wm_base_get_xdg_surface(wm_base, surface);
    xdg_surface_add_listener(xdg, &xdg_surface_listener, NULL);
    struct xdg_toplevel *toplevel = xdg_surface_get_toplevel(xdg);
    xdg_toplevel_set_title(toplevel, "Launcher");
    xdg_toplevel_set_app_id(toplevel, "launcher");
    wl_surface_commit(surface);
    while (!configured && wl_display_dispatch(display) != -1) {
    }

    // A grey square, so that the compositor maps the window.
    const int side = 200, stride = side * 4, size = stride * side;
    const int fd = memfd_create("launcher", 0);
    if (fd < 0 || ftruncate(fd, size) != 0)
        return 1;
    void *pixels = mmap(NULL, size, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    memset(pixels, 0x80, size);
    struct wl_shm_pool *pool = wl_shm_create_pool(shm, fd, size);
    struct wl_buffer *buffer =
        wl_shm_pool_create_buffer(pool, 0, side, side, stride, WL_SHM_FORMAT_XRGB8888);
    wl_surface_attach(surface, buffer, 0, 0);
    wl_surface_commit(surface);
    while (!focused && !no_keyboard && wl_display_dispatch(display) != -1) {
    }

    static const struct xdg_activation_token_v1_listener token_listener = {token_done};
    struct xdg_activation_token_v1 *token = xdg_activation_v1_get_activation_token(activation);
    xdg_activation_token_v1_add_listener(token, &token_listener, NULL);
    xdg_activation_token_v1_set_app_id(token, argv[1]);
    xdg_activation_token_v1_set_surface(token, surface);
    if (focused)
        xdg_activation_token_v1_set_serial(token, serial, seat);
    xdg_activation_token_v1_commit(token);

    // Up, answering the compositor, until it is ended.
    while (wl_display_dispatch(display) != -1) {
    }
    wl_display_disconnect(display);
    return 0;
}
