// An application whose functions are named like those of a shared library: each calls its own.

#include <cstdio>
#include <string_view>

#include <vekdb/host/visibility.h>

#include "days_work.h"

VEKDB_PUBLIC int parseInt(std::string_view) noexcept {
    return -1;
}

VEKDB_PUBLIC int strxcmp(std::string_view, std::string_view) noexcept {
    return 0;
}

VEKDB_PUBLIC bool isEssentiallyEmpty(std::string_view) noexcept {
    return true;
}

int main(int count, char** arguments) {
    if (count != 2 || !daysWork(arguments[1])) {
        std::puts("the library called a function of the application");
        return 1;
    }
    vekdb log(fromUTF8(LightweightString<char>(arguments[1])), 1000, true);
    int take = 0;
    return log.in_field(1, log.get_fieldnum("Take"), take) && take == 2 ? 0 : 2;
}
