// Called by the undefined-behaviour sanitizer when the program starts. The check for the types of objects is off; all
// the others are on.
extern "C" __attribute__((visibility("default"))) char const* __ubsan_default_options();

extern "C" char const* __ubsan_default_options() {
    return "suppressions=" VELK_SUPPRESSIONS;
}
