// glibc's newlocale never frees its copy of LOCPATH, which tests with a locale of their own set.

#ifndef __has_feature // GCC before 14
#define __has_feature(name) 0
#endif

#if __has_feature(address_sanitizer) || defined(__SANITIZE_ADDRESS__)

// NOLINTBEGIN(bugprone-reserved-identifier): the leak checker looks for this name
extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions() {
    return "leak:argz_add_sep\n";
}

// NOLINTEND(bugprone-reserved-identifier)

#endif
