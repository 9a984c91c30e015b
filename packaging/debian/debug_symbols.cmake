# Installs the debugging symbols of `files` where debuggers look for them, by build ID. Uses `files`, `readelf`, `objcopy`
# and CMAKE_INSTALL_PREFIX.
# SPDX-License-Identifier: MIT
foreach(file ${files})
    execute_process(COMMAND ${readelf} --notes --wide ${file} OUTPUT_VARIABLE notes COMMAND_ERROR_IS_FATAL ANY)
    if(NOT notes MATCHES "Build ID: ([0-9a-f][0-9a-f])([0-9a-f]+)")
        message(FATAL_ERROR "${file} has no build ID: it was linked without --build-id.")
    endif()
    set(folder $ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/lib/debug/.build-id/${CMAKE_MATCH_1})
    file(MAKE_DIRECTORY ${folder})
    set(symbols ${folder}/${CMAKE_MATCH_2}.debug)
    execute_process(COMMAND ${objcopy} --only-keep-debug ${file} ${symbols}
                    COMMAND_ERROR_IS_FATAL ANY)
    file(CHMOD ${symbols} FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endforeach()
