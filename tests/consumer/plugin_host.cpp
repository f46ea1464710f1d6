// A program without the library, which loads a plug-in that has it.

#include <dlfcn.h>

#include <cstdio>
#include <string>
#include <vector>

int main(int count, char** arguments) {
    if (count != 3) return 2;
    std::vector<std::string> own(10, std::string(100, 'h'));
    void* plugin = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
    if (plugin == nullptr) {
        std::puts(dlerror());
        return 3;
    }
    auto run = reinterpret_cast<int (*)(const char*)>(dlsym(plugin, "run"));
    return run != nullptr ? run(arguments[2]) : 4;
}
