# SPDX-License-Identifier: GPL-3.0-or-later
# Every target of the house is declared through these functions, so that warnings, language settings,
# precompiled headers and sanitizers are the same everywhere.

include_guard(GLOBAL)

# Warnings, Qt without its keywords (records have fields named signals and slots), sanitizers.
function(tz_common_settings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
                                             -Werror)
    target_compile_definitions(${target} PRIVATE QT_NO_KEYWORDS QT_NO_CAST_TO_ASCII)
    if(TZ_SANITIZE)
        target_compile_options(${target} PRIVATE -fsanitize=${TZ_SANITIZE} -fno-omit-frame-pointer)
        if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
            # GCC 12 takes instrumented library code for code that reads what nobody wrote.
            target_compile_options(${target} PRIVATE -Wno-maybe-uninitialized)
        endif()
        if(TZ_SANITIZE MATCHES "undefined")
            target_compile_options(${target} PRIVATE -fno-sanitize-recover=undefined)
        endif()
        if(TZ_SANITIZE MATCHES "thread" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
            # The queue library orders some of its accesses by fences, which the sanitizer does not see.
            target_compile_options(${target} PRIVATE -Wno-tsan)
        endif()
        target_link_options(${target} PRIVATE -fsanitize=${TZ_SANITIZE})
    endif()
endfunction()

# Tests are compiled more often than they run, and what they run is in the libraries.
function(tz_test_settings target)
    tz_common_settings(${target})
    target_compile_options(${target} PRIVATE -O0)
endfunction()

# tz_target(<target> CORE|WIDGETS|TEST|PLAIN): finishes a target made by add_library or add_executable.
# CORE sees Qt Core alone, WIDGETS the widgets, TEST adds the test libraries, PLAIN brings no precompiled header.
function(tz_target target kind)
    if(kind STREQUAL "TEST")
        tz_test_settings(${target})
    else()
        tz_common_settings(${target})
    endif()
    target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR})
    set_target_properties(${target} PROPERTIES AUTOMOC ON AUTOUIC ON AUTOUIC_SEARCH_PATHS "${CMAKE_CURRENT_SOURCE_DIR}")
    if(kind STREQUAL "CORE")
        target_link_libraries(${target} PRIVATE tz_pch_core_deps)
        target_precompile_headers(${target} REUSE_FROM tz_pch_core)
    elseif(kind STREQUAL "WIDGETS")
        target_link_libraries(${target} PRIVATE tz_pch_widgets_deps)
        target_precompile_headers(${target} REUSE_FROM tz_pch_widgets)
    elseif(kind STREQUAL "TEST")
        target_link_libraries(${target} PRIVATE tz_pch_test_deps)
        target_precompile_headers(${target} REUSE_FROM tz_pch_test)
    elseif(NOT kind STREQUAL "PLAIN")
        message(FATAL_ERROR "tz_target: unknown kind ${kind}")
    endif()
endfunction()

# tz_add_gtest(<name> SOURCES ... LIBS ... [LABELS ...] [TIMEOUT s] [MOC]): one GoogleTest program, run offscreen; MOC where
# one of its sources has Q_OBJECT.
function(tz_add_gtest name)
    cmake_parse_arguments(ARG "MOC" "TIMEOUT" "SOURCES;LIBS;LABELS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    tz_target(${name} TEST)
    if(NOT ARG_MOC)
        set_target_properties(${name} PROPERTIES AUTOMOC OFF AUTOUIC OFF)
    endif()
    target_link_libraries(${name} PRIVATE tz_test_main ${ARG_LIBS})
    tz_register_test(${name} "${ARG_TIMEOUT}" "${ARG_LABELS}")
endfunction()

# tz_add_qtest(...): the same for a QtTest program; its source ends with TZ_QTEST_MAIN(Class...).
function(tz_add_qtest name)
    cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LIBS;LABELS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    tz_target(${name} TEST)
    target_link_libraries(${name} PRIVATE tz_test_support_ui ${ARG_LIBS})
    tz_register_test(${name} "${ARG_TIMEOUT}" "${ARG_LABELS}")
endfunction()

function(tz_register_test name timeout labels)
    if(NOT timeout)
        set(timeout 120)
    endif()
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT ${timeout} LABELS "${labels}")
    tz_test_environment(${name})
endfunction()

# What every test runs with: no display, the sanitizers' settings, and a locale that can name every file, which a bare
# container does not set.
function(tz_test_environment name)
    set_property(TEST ${name} PROPERTY ENVIRONMENT
        "QT_QPA_PLATFORM=offscreen"
        "LC_ALL=C.UTF-8"
        "TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1:suppressions=${PROJECT_SOURCE_DIR}/cmake/tsan.supp"
        "ASAN_OPTIONS=detect_leaks=1"
        "LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/cmake/lsan.supp"
        "UBSAN_OPTIONS=print_stacktrace=1")
endfunction()
