// Only in builds with AddressSanitizer: what it is to know about leaks.

extern "C" {

// Fontconfig, which cairo finds its letters with, loses a few patterns while it reads its
// configuration. Nothing that is ours stays behind; what is, is still reported.
__attribute__((visibility("default"))) const char* __lsan_default_suppressions();  // NOLINT
const char* __lsan_default_suppressions() { return "leak:libfontconfig"; }         // NOLINT

// Tests read what the program says: no table of the above.
__attribute__((visibility("default"))) const char* __lsan_default_options();  // NOLINT
const char* __lsan_default_options() { return "print_suppressions=0"; }       // NOLINT
}
