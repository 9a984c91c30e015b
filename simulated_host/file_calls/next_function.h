// Finds the C library's function behind an interposed one.
// SPDX-License-Identifier: MIT
#pragma once

#include <dlfcn.h>

template <typename Function> Function nextFunction(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

/// Defines `next`, the next function of that name in the search order. Looked up once.
#define NEXT(NAME) static const auto next = nextFunction<decltype(&::NAME)>(#NAME)

/// Passes further parameters or arguments, with the comma before them, as one argument of a macro.
#define WITH(...) , __VA_ARGS__
