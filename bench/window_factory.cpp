// Opens windows of many applications at once, for measuring: window_factory WINDOWS APPLICATIONS.
// Prints a line when all are mapped and keeps them until its standard input ends.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <unistd.h>

#include <xcb/xcb.h>

namespace {

xcb_atom_t intern(xcb_connection_t *connection, const char *name)
{
    const auto cookie
        = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    xcb_intern_atom_reply_t *reply = xcb_intern_atom_reply(connection, cookie, nullptr);
    const xcb_atom_t atom = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    std::free(reply);
    return atom;
}

void setText(xcb_connection_t *connection, xcb_window_t window, xcb_atom_t property,
             xcb_atom_t type, const std::string &text)
{
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, property, type, 8,
                        static_cast<std::uint32_t>(text.size()), text.data());
}

} // namespace

int main(int argc, char *argv[])
{
    const int windows = argc > 1 ? std::atoi(argv[1]) : 0;
    const int applications = argc > 2 ? std::atoi(argv[2]) : 0;
    xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
    if (windows <= 0 || applications <= 0 || xcb_connection_has_error(connection)) {
        std::fprintf(stderr, "usage: window_factory WINDOWS APPLICATIONS, with a display\n");
        return 2;
    }
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    const xcb_atom_t utf8 = intern(connection, "UTF8_STRING");
    const xcb_atom_t title = intern(connection, "_NET_WM_NAME");
    const xcb_atom_t process = intern(connection, "_NET_WM_PID");
    const auto pid = static_cast<std::uint32_t>(getpid());
    for (int i = 0; i < windows; ++i) {
        const xcb_window_t window = xcb_generate_id(connection);
        xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen->root, 10, 10, 300, 200,
                          0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL,
                          &screen->black_pixel);
        const std::string number = std::to_string(i % applications);
        const std::string application = "Bench" + number;
        const std::string instance = "bench" + number;
        const std::string wmClass = instance + '\0' + application + '\0';
        setText(connection, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, wmClass);
        setText(connection, window, title, utf8, application + " window " + std::to_string(i));
        setText(connection, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, "window");
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, process, XCB_ATOM_CARDINAL,
                            32, 1, &pid);
        xcb_map_window(connection, window);
    }
    std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    std::puts("mapped");
    std::fflush(stdout);
    char byte = 0;
    while (read(STDIN_FILENO, &byte, 1) > 0) { }
    xcb_disconnect(connection);
    return 0;
}
