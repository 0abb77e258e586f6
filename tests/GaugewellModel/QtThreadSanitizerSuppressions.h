#pragma once

// Include from exactly one source file of the test program.
//
// Qt, libdbus and GLib are not built with ThreadSanitizer: the atomics and locks with which QtDBus
// hands messages between its bus thread and the main thread are invisible to it, so every hand-over
// (and every reference count of a shared message) is reported as a race. Our notification code
// itself runs on the main thread only. The sanitizer asks for this hook at start-up; in builds
// without it the function is simply never called.
extern "C" const char* __tsan_default_suppressions() {
    return "called_from_lib:libQt6Core.so.6\n"
           "called_from_lib:libQt6DBus.so.6\n"
           "called_from_lib:libdbus-1.so.3\n"
           "called_from_lib:libglib-2.0.so.0\n"
           "race:libQt6Core.so.6\n"
           "race:libQt6DBus.so.6\n"
           "race:libdbus-1.so.3\n"
           "race:libglib-2.0.so.0\n"
           "mutex:libQt6Core.so.6\n"
           "mutex:libQt6DBus.so.6\n"
           "deadlock:libQt6Core.so.6\n"
           "deadlock:libQt6DBus.so.6\n";
}
