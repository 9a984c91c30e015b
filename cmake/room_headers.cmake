# Makes headers part of their target. CMake 3.24 and later can then check that each compiles alone: the target
# all_verify_interface_header_sets.
# SPDX-License-Identifier: MIT

# room_headers(TARGET headers...)
function(room_headers target)
    if(CMAKE_VERSION VERSION_GREATER_EQUAL 3.24 AND ARGN)
        target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${ARGN})
        set_target_properties(${target} PROPERTIES VERIFY_INTERFACE_HEADER_SETS ON)
    endif()
endfunction()
