/// Times a program from outside: from its start to the moment when its window is
/// on the screen and holds more than one colour. Usage: windowtime PROGRAM ARG...
/// Prints milliseconds. The screen must have no window manager and be empty.

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <set>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace {

bool ignoreErrors(Display *)
{
    XSetErrorHandler([](Display *, XErrorEvent *) { return 0; });
    return true;
}

/// True if \a window is large, mapped, and shows something in its middle.
bool isPainted(Display *display, Window window)
{
    XWindowAttributes attributes;
    if (!XGetWindowAttributes(display, window, &attributes) || attributes.map_state != IsViewable ||
        attributes.width < 350 || attributes.height < 300 || attributes.override_redirect)
        return false;
    XImage *image = XGetImage(display, window, 0, 0, unsigned(attributes.width),
                              unsigned(attributes.height), AllPlanes, ZPixmap);
    if (!image)
        return false;
    std::set<unsigned long> colours;
    for (int y = attributes.height / 5; y < attributes.height / 2; y += 3) {
        for (int x = 10; x < attributes.width / 2; x += 2)
            colours.insert(XGetPixel(image, x, y));
    }
    XDestroyImage(image);
    return colours.size() > 3;
}

bool anyPainted(Display *display)
{
    Window root = 0;
    Window parent = 0;
    Window *children = nullptr;
    unsigned count = 0;
    bool painted = false;
    if (XQueryTree(display, DefaultRootWindow(display), &root, &parent, &children, &count)) {
        for (unsigned i = 0; i < count && !painted; ++i)
            painted = isPainted(display, children[i]);
        XFree(children);
    }
    return painted;
}

} // namespace

int main(int argc, char **argv)
{
    Display *display = argc > 1 ? XOpenDisplay(nullptr) : nullptr;
    if (!display || !ignoreErrors(display))
        return 2;
    const auto start = std::chrono::steady_clock::now();
    pid_t pid = 0;
    if (posix_spawnp(&pid, argv[1], nullptr, nullptr, argv + 1, environ) != 0)
        return 2;
    double elapsed = 0;
    bool painted = false;
    while (!painted && elapsed < 20000) {
        usleep(1000);
        painted = anyPainted(display);
        elapsed =
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
                .count();
    }
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
    if (!painted)
        return 1;
    std::printf("%.1f\n", elapsed);
    return 0;
}
