// Finds the C library's function that an interposed one stands before.
// SPDX-License-Identifier: MIT
#pragma once

#include <dlfcn.h>

template <typename Function> Function nextFunction(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

/// `next` is the function of that name behind this one. Looked up once.
#define NEXT(NAME) static const auto next = nextFunction<decltype(&::NAME)>(#NAME)

/// Further parameters or arguments, with the comma before them, as one argument of a macro.
#define WITH(...) , __VA_ARGS__
