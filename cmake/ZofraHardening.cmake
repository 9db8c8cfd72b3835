# SPDX-License-Identifier: GPL-3.0-or-later
# What makes a fault in memory end the program instead of serving whoever caused it. Every build that people run has all
# of it; tests/system/test_hardening.py reads the finished binary.
include(CheckCXXCompilerFlag)
include(CheckLinkerFlag)
include(CheckPIESupported)

# Any address: position independent, where the compiler does not do so by itself.
check_pie_supported(LANGUAGES CXX)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# Checks of the stack in every build, under the sanitizers as well.
target_compile_options(zofra_flags INTERFACE -fstack-protector-strong)
foreach(flag IN ITEMS -fstack-clash-protection -fcf-protection=full -mbranch-protection=standard)
    # The last two are the same for different processors; each compiler refuses the other one's.
    string(MAKE_C_IDENTIFIER "has${flag}" known)
    check_cxx_compiler_flag("-Werror ${flag}" ${known})
    if(${known})
        target_compile_options(zofra_flags INTERFACE ${flag})
    endif()
endforeach()

# Tables that the loader fills are read-only before the first line of ours runs; no stack and no heap is executed.
foreach(flag IN ITEMS -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
    string(MAKE_C_IDENTIFIER "links${flag}" known)
    check_linker_flag(CXX "${flag}" ${known})
    if(${known})
        target_link_options(zofra_flags INTERFACE ${flag})
    endif()
endforeach()

# An index or an iterator out of range ends the program at once.
target_compile_definitions(zofra_flags INTERFACE _GLIBCXX_ASSERTIONS)
# The C library's checked functions need an optimising compiler; the sanitizers bring better ones.
if(CMAKE_BUILD_TYPE MATCHES "^(Release|RelWithDebInfo|MinSizeRel)$" AND NOT ZOFRA_SANITIZE)
    target_compile_options(zofra_flags INTERFACE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3)
endif()
