#include <vekdb/support/version.h>

const char* vekdbDllVersionStr() {
    return kVekdbVersion;
}
