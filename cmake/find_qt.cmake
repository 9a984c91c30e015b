# Finds QtCore: a Qt 4 when QT_QMAKE_EXECUTABLE points at one or PKG_CONFIG_PATH leads to its QtCore.pc, otherwise Qt 5.
# Sets POWEROFF_PROTECT_QT_MAJOR and POWEROFF_PROTECT_QTCORE (the target to link).
# SPDX-License-Identifier: MIT
set(POWEROFF_PROTECT_QTCORE "")

if(QT_QMAKE_EXECUTABLE)
    execute_process(COMMAND ${QT_QMAKE_EXECUTABLE} -query QT_VERSION
                    OUTPUT_VARIABLE qmake_version OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE qmake_result)
    if(NOT qmake_result EQUAL 0)
        message(FATAL_ERROR "QT_QMAKE_EXECUTABLE is ${QT_QMAKE_EXECUTABLE}, which does not answer '-query QT_VERSION'. "
                            "Give the path of a working qmake, or leave the variable unset to use Qt 5.")
    endif()
    if(qmake_version MATCHES "^4\\.")
        find_package(Qt4 4.8 REQUIRED COMPONENTS QtCore)
        set(POWEROFF_PROTECT_QTCORE Qt4::QtCore)
        set(POWEROFF_PROTECT_QT_MAJOR 4)
    endif()
endif()

if(NOT POWEROFF_PROTECT_QTCORE)
    find_package(PkgConfig QUIET)
    if(PKG_CONFIG_FOUND)
        pkg_check_modules(QTCORE4 QUIET IMPORTED_TARGET "QtCore >= 4.8" "QtCore < 5")
    endif()
    if(QTCORE4_FOUND)
        set(POWEROFF_PROTECT_QTCORE PkgConfig::QTCORE4)
        set(POWEROFF_PROTECT_QT_MAJOR 4)
    else()
        find_package(Qt5Core 5.15 QUIET)
        if(NOT Qt5Core_FOUND)
            message(FATAL_ERROR "Neither Qt 4.8 nor Qt 5.15 was found. Install Debian's qtbase5-dev, or point at a Qt 4 "
                                "with -DQT_QMAKE_EXECUTABLE=/path/to/qmake or PKG_CONFIG_PATH=/path/to/lib/pkgconfig.")
        endif()
        set(POWEROFF_PROTECT_QTCORE Qt5::Core)
        set(POWEROFF_PROTECT_QT_MAJOR 5)
    endif()
endif()
message(STATUS "QtCore: Qt ${POWEROFF_PROTECT_QT_MAJOR} (${POWEROFF_PROTECT_QTCORE})")
