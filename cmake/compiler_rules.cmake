# Sets the compiler rules for every target.
# SPDX-License-Identifier: MIT
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Release, Debug, RelWithDebInfo or MinSizeRel" FORCE)
endif()

# Without this, a compiler cache would skip everything that uses precompiled headers.
find_program(CCACHE_PROGRAM ccache)
mark_as_advanced(CCACHE_PROGRAM)
if(CCACHE_PROGRAM AND "${CMAKE_CXX_COMPILER_LAUNCHER}" MATCHES "^(|ccache)$")
    set(CMAKE_CXX_COMPILER_LAUNCHER
        ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${CCACHE_PROGRAM})
endif()

add_compile_options(-Wall -Wextra -Wsuggest-override)
if(POWEROFF_PROTECT_WERROR)
    add_compile_options(-Werror)
endif()
if(POWEROFF_PROTECT_SANITIZE)
    add_compile_options(-fsanitize=${POWEROFF_PROTECT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${POWEROFF_PROTECT_SANITIZE})
endif()
