// Fontconfig keeps a cache for the life of the process and frees it in no exit path; the leak
// checker of the sanitizer build would count it against the tests. Only that library is excused.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig.so\n"; }
