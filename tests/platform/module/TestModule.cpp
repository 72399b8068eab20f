// A module for the loader tests to load, look into and unload.
#define TEST_MODULE_EXPORT extern "C" __attribute__((visibility("default")))

TEST_MODULE_EXPORT int TesseraTestModuleAnswer() { return 42; }

TEST_MODULE_EXPORT int TesseraTestModuleAdd(int a, int b) { return a + b; }
