# SPDX-License-Identifier: GPL-3.0-or-later
# One interface target carries every compiler flag; the functions below make libraries and tests that use it.

add_library(zofra_flags INTERFACE)
target_compile_features(zofra_flags INTERFACE cxx_std_20)
target_include_directories(zofra_flags INTERFACE "${PROJECT_SOURCE_DIR}")
target_compile_options(zofra_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual
    -Wimplicit-fallthrough -Wnull-dereference)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # False alarms of this compiler in optimised library headers.
    target_compile_options(zofra_flags INTERFACE -Wno-null-dereference -Wno-maybe-uninitialized)
endif()
target_compile_definitions(zofra_flags INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_CAST_FROM_BYTEARRAY
    QT_NO_NARROWING_CONVERSIONS_IN_CONNECT QT_NO_CONTEXTLESS_CONNECT QT_NO_FOREACH QT_NO_KEYWORDS
    QT_STRICT_ITERATORS QT_DISABLE_DEPRECATED_BEFORE=0x060400)
if(ZOFRA_WERROR)
    target_compile_options(zofra_flags INTERFACE -Werror)
endif()
include(ZofraHardening)
if(ZOFRA_SANITIZE)
    target_compile_options(zofra_flags INTERFACE -fsanitize=${ZOFRA_SANITIZE} -fno-omit-frame-pointer
        -fno-sanitize-recover=all)
    target_link_options(zofra_flags INTERFACE -fsanitize=${ZOFRA_SANITIZE})
endif()
if(ZOFRA_COVERAGE)
    target_compile_options(zofra_flags INTERFACE --coverage)
    target_link_options(zofra_flags INTERFACE --coverage)
endif()
if(ZOFRA_FUZZ)
    target_compile_options(zofra_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()

# zofra_use_unity(TARGET)
# Compiles the target's sources in a few large pieces: what they all read is read, and what they all use is made, once.
function(zofra_use_unity target)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ${ZOFRA_UNITY} UNITY_BUILD_BATCH_SIZE 16)
endfunction()

# zofra_library(NAME SOURCES file... [DEPENDS target...] [HEADERS core|bus|desktop])
# A folder's one static library. Users of it see the headers of its dependencies, nothing else. HEADERS names the
# precompiled ones; what they hold must be among the dependencies.
function(zofra_library name)
    cmake_parse_arguments(arg "" "HEADERS" "SOURCES;DEPENDS" ${ARGN})
    add_library(${name} STATIC ${arg_SOURCES})
    target_link_libraries(${name} PUBLIC zofra_flags ${arg_DEPENDS})
    if(NOT arg_HEADERS)
        set(arg_HEADERS core)
    endif()
    zofra_use_headers(${name} ${arg_HEADERS})
    zofra_use_unity(${name})
endfunction()

# zofra_test(NAME SOURCES file... [DEPENDS target...])
# One GoogleTest program, bin/NAME, known to CTest under the same name.
function(zofra_test name)
    cmake_parse_arguments(arg "" "" "SOURCES;DEPENDS" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE zofra_flags zofra_test_support ${arg_DEPENDS} GTest::gmock_main)
    zofra_use_headers(${name} tests)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 120 LABELS unit)
endfunction()

# zofra_fuzz(NAME SOURCES file... [DEPENDS target...])
# One libFuzzer program, bin/NAME, whose corpus is fuzz/corpus/NAME.
function(zofra_fuzz name)
    cmake_parse_arguments(arg "" "" "SOURCES;DEPENDS" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE zofra_flags ${arg_DEPENDS})
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
endfunction()
