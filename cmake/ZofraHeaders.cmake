# SPDX-License-Identifier: GPL-3.0-or-later
# Precompiled headers: a few sets, each compiled once for all targets that use it.

option(ZOFRA_PRECOMPILE "Compile common headers once (gcc only, so that a clang build shows missing includes)" ON)

# zofra_headers(SET DEPENDS target...)
# Target zofra_headers_SET compiles cmake/headers/SET.h.
function(zofra_headers set)
    cmake_parse_arguments(arg "" "" "DEPENDS" ${ARGN})
    set(empty "${CMAKE_CURRENT_BINARY_DIR}/headers_${set}.cpp")
    file(CONFIGURE OUTPUT "${empty}" CONTENT "// Nothing but the headers.\n")
    add_library(zofra_headers_${set} OBJECT "${empty}")
    target_link_libraries(zofra_headers_${set} PRIVATE zofra_flags ${arg_DEPENDS})
    target_precompile_headers(zofra_headers_${set} PRIVATE "${PROJECT_SOURCE_DIR}/cmake/headers/${set}.h")
    target_compile_options(zofra_headers_${set} PRIVATE -fpch-preprocess)
endfunction()

# zofra_use_headers(TARGET SET)
function(zofra_use_headers target set)
    if(ZOFRA_PRECOMPILE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT ZOFRA_COVERAGE)
        if(NOT TARGET zofra_headers_${set})
            zofra_headers(${set} DEPENDS ${ZOFRA_HEADERS_${set}})
        endif()
        target_precompile_headers(${target} REUSE_FROM zofra_headers_${set})
        # Lets a compile cache see what the headers hold.
        target_compile_options(${target} PRIVATE -fpch-preprocess)
    endif()
endfunction()

set(ZOFRA_HEADERS_core Qt6::Core)
set(ZOFRA_HEADERS_bus Qt6::DBus)
set(ZOFRA_HEADERS_desktop Qt6::Widgets Qt6::DBus)
set(ZOFRA_HEADERS_tests Qt6::Core GTest::gmock)
