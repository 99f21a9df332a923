// SPDX-License-Identifier: MIT
//
// A host that knows nothing of the library: it loads a plugin, which brings the library with it.

#include <dlfcn.h>

#include <cstdio>

int main(int argc, char** argv)
{
    void* const pPlugin = argc > 1 ? dlopen(argv[1], RTLD_NOW) : nullptr;
    if (pPlugin == nullptr)
    {
        std::fprintf(stderr, "%s\n", dlerror());
        return 2;
    }
    int (*useLibrary)() = nullptr;
    *reinterpret_cast<void**>(&useLibrary) = dlsym(pPlugin, "useLibrary");
    return useLibrary != nullptr ? useLibrary() : 3;
}
