// Exhaustion is tested by asking for sizes that no machine has; the sanitizer's
// malloc is to answer null to them, as malloc does, instead of ending the run.
extern "C" const char* __asan_default_options();

extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1";
}
