# Compiler rules that every target keeps.
# SPDX-License-Identifier: MIT
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Sums of configured numbers wrap: out-of-range values pass through as 32-bit values.
add_compile_options(-Wall -Wextra -fwrapv)
if(POWEROFF_PROTECT_WERROR)
    add_compile_options(-Werror)
endif()
if(POWEROFF_PROTECT_SANITIZE)
    add_compile_options(-fsanitize=${POWEROFF_PROTECT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${POWEROFF_PROTECT_SANITIZE})
endif()
