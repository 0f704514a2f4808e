# Compiler settings shared by every target, as the interface library velta::flags.

set(VELTA_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize takes them")
option(VELTA_FUZZ "Build the fuzzers of tests/fuzz, which takes clang" OFF)

add_library(velta_flags INTERFACE)
add_library(velta::flags ALIAS velta_flags)

set_target_properties(velta_flags PROPERTIES INTERFACE_POSITION_INDEPENDENT_CODE ON)
target_compile_features(velta_flags INTERFACE cxx_std_20)
set(CMAKE_CXX_EXTENSIONS OFF)

if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    # Voice analysis promises results to the last bit: no product may be fused into a sum.
    target_compile_options(velta_flags INTERFACE
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
        -Werror -ffp-contract=off)
elseif(MSVC)
    target_compile_options(velta_flags INTERFACE /W4 /WX /permissive- /utf-8 /fp:precise)
endif()

if(VELTA_SANITIZE)
    target_compile_options(velta_flags INTERFACE
        -fsanitize=${VELTA_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(velta_flags INTERFACE -fsanitize=${VELTA_SANITIZE})
endif()

if(VELTA_FUZZ)
    # The code is written for other compilers' warnings; what clang thinks of it stops no fuzzer.
    target_compile_options(velta_flags INTERFACE -fsanitize=fuzzer-no-link -Wno-error)
endif()

find_program(VELTA_CCACHE ccache)
if(VELTA_CCACHE)
    # Without leave to do so, ccache keeps nothing that was compiled with precompiled headers.
    set(CMAKE_CXX_COMPILER_LAUNCHER
        "${CMAKE_COMMAND}" -E env CCACHE_SLOPPINESS=pch_defines,time_macros "${VELTA_CCACHE}")
endif()
