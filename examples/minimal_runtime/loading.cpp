// Runs the minimal runtime, which loads the module at run time: loading_runtime [LIBRARY]
// SPDX-License-Identifier: MIT
#include "runtime.h"

#include <cstdio>
#include <dlfcn.h>

int main(int argc, char** argv)
{
    // RTLD_NOW: a symbol that the runtime does not supply shows here and not in the middle of a change.
    void* const library = dlopen(argc > 1 ? argv[1] : "libpoweroff_protect.so", RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        std::fprintf(stderr, "loading_runtime: %s\n", dlerror());
        return 2;
    }
    const auto create = reinterpret_cast<ExtendFuncModelBase* (*)()>(dlsym(library, "createModel"));
    const auto destroy = reinterpret_cast<void (*)(ExtendFuncModelBase*)>(dlsym(library, "deletModel"));
    const auto version = reinterpret_cast<const char* (*)()>(dlsym(library, "poweroffProtectVersion"));
    if (create == nullptr || destroy == nullptr) {
        std::fprintf(stderr, "loading_runtime: the library does not export createModel and deletModel\n");
        return 2;
    }
    std::printf("poweroff_protect %s\n", version != nullptr ? version() : "before 1.1.0");

    ExtendFuncModelBase* const model = create();
    const int status = countOnce(model);
    destroy(model);
    dlclose(library);
    return status;
}
