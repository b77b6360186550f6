// What the sanitizers shall overlook: faults of libraries that are not ours, as narrowly as they can be named. Linked
// into programs that use GStreamer or draw texts; without a sanitizer nobody calls these functions.

extern "C" {

__attribute__((visibility("default"))) char const* __asan_default_options();
__attribute__((visibility("default"))) char const* __lsan_default_options();
__attribute__((visibility("default"))) char const* __lsan_default_suppressions();
__attribute__((visibility("default"))) char const* __tsan_default_options();
__attribute__((visibility("default"))) char const* __tsan_default_suppressions();

// GLib is built without frame pointers: only the slow way finds out who called its g_malloc.
char const* __asan_default_options() { return "fast_unwind_on_malloc=0"; }

// Tests compare what the program says, to which the sanitizer shall not add.
char const* __lsan_default_options() { return "print_suppressions=0"; }

char const* __lsan_default_suppressions() {
    return
        // GLib drops its table of quarks when it outgrows it, as others may be reading it. The first one is made while
        // the dynamic loader initialises the library.
        "leak:ld-linux-x86-64\n"
        "leak:g_quark_from_static_string\n"
        "leak:g_quark_from_string\n"
        "leak:g_intern_string\n"
        "leak:g_intern_static_string\n"
        // Fonts and their configuration, which cairo and fontconfig keep until the process ends.
        "leak:libfontconfig\n";
}

// GStreamer and GLib are built without the sanitizer and lock by system calls that it does not see: what they do among
// themselves is left out, what our code does on their threads is not. A finding ends the program at once: one that a
// test kills would not come to tell of it by its exit code.
char const* __tsan_default_options() { return "ignore_noninstrumented_modules=1:halt_on_error=1"; }

char const* __tsan_default_suppressions() {
    return
        // Orders of locks among the elements of a pipeline and inside the decoders, of which we hold none.
        "deadlock:libgstreamer-1.0.so\n"
        "deadlock:libavcodec.so\n"
        // Frees, on a thread of GStreamer, pixels that came there through one of its queues.
        "race:DeletePixels\n"
        // Numbers frames, on a thread of GStreamer, that come to the reader through one of its queues.
        "race:NumberFrame\n";
}
}
