# Compiles parts of the module: C++11, position-independent, with only marked symbols exported.
# SPDX-License-Identifier: MIT

# module_objects(NAME HEADERS headers... SOURCES sources...): an object library; tools may link it instead of the module.
function(module_objects name)
    cmake_parse_arguments(part "" "" "HEADERS;SOURCES" ${ARGN})
    add_library(${name} OBJECT ${part_SOURCES})
    target_compile_features(${name} PUBLIC cxx_std_11)
    target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
    target_link_libraries(${name} PUBLIC ${POWEROFF_PROTECT_QTCORE})
    # The module also loads with an older minor version of Qt than it was built with; the test of its symbols checks that.
    target_compile_definitions(${name} PRIVATE QT_NO_VERSION_TAGGING)
    set_target_properties(${name} PROPERTIES
        CXX_STANDARD ${POWEROFF_PROTECT_MODULE_STANDARD}
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    room_headers(${name} ${part_HEADERS})
endfunction()
