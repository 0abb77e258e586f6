#pragma once

// Include from exactly one source file of each test program that calls libsecret.
//
// libsecret and the GLib, GObject and GIO libraries under it are not built with ThreadSanitizer: the
// locks and atomics they use among their own threads ("gdbus", "pool") are invisible to it, so every
// hand-over between those threads is reported as a race. Our code reaches them only through
// Platform/SecretStore.cpp, one call at a time. The sanitizer asks for this hook at start-up; in
// builds without it the function is simply never called.
extern "C" const char* __tsan_default_suppressions() {
    return "called_from_lib:libsecret-1.so.0\n"
           "called_from_lib:libglib-2.0.so.0\n"
           "called_from_lib:libgobject-2.0.so.0\n"
           "called_from_lib:libgio-2.0.so.0\n"
           "race:libsecret-1.so.0\n"
           "race:libglib-2.0.so.0\n"
           "race:libgobject-2.0.so.0\n"
           "race:libgio-2.0.so.0\n"
           "mutex:libsecret-1.so.0\n"
           "mutex:libglib-2.0.so.0\n";
}
