// On Debian 13 the library that tells the system's proxy leaves a few words behind in GLib, once a program.

#ifndef __has_feature // GCC before 14
#define __has_feature(name) 0
#endif

#if __has_feature(address_sanitizer) || defined(__SANITIZE_ADDRESS__)

// NOLINTBEGIN(bugprone-reserved-identifier): the leak checker looks for this name
extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions() {
    return "leak:libglib-2.0\n";
}

// NOLINTEND(bugprone-reserved-identifier)

#endif
