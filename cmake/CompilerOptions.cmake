# SPDX-License-Identifier: MIT
# How this tree is compiled when it is built for its own sake. As a part of another project it brings no
# flags of its own.

if(NOT PROJECT_IS_TOP_LEVEL)
    return()
endif()

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Kind of build" FORCE)
endif()
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(CCACHE ccache)
if(CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()

# Whether a warning stops the build is for the presets to say (CMAKE_COMPILE_WARNING_AS_ERROR).
add_compile_options(
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wold-style-cast -Wcast-align
    -Wnon-virtual-dtor -Woverloaded-virtual -Wextra-semi -Wformat=2 -Wundef)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-Wduplicated-cond -Wlogical-op)
elseif(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    # clang counts changes of sign among the conversions; g++ does not, and neither do we.
    add_compile_options(-Wno-sign-conversion -Wimplicit-fallthrough)
endif()

set(ESTATEBOOK_SANITIZERS "" CACHE STRING "Sanitizers to build with, as the compiler names them: address,undefined")
if(ESTATEBOOK_SANITIZERS)
    add_compile_options(-fsanitize=${ESTATEBOOK_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${ESTATEBOOK_SANITIZERS})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # The checks that are woven in keep g++ from seeing what was set; it warns rightly without them.
        add_compile_options(-Wno-maybe-uninitialized)
    endif()
endif()
