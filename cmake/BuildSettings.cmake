# Compiler settings that every target of the project shares.

option(TOMEX_SANITIZE "Build with the address and undefined behaviour sanitizers" OFF)
option(TOMEX_FUZZ "Build the fuzz targets, and the libraries for them (needs clang)" OFF)
option(TOMEX_WERROR "Treat warnings as errors" ON)

# ccache keeps nothing of sources with a precompiled header unless it is told to be less careful.
set(precompile ON)
if(CMAKE_CXX_COMPILER_LAUNCHER MATCHES "ccache")
    set(precompile OFF)
endif()
option(TOMEX_PRECOMPILED_HEADERS "Read headers that very many sources include once" ${precompile})

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)

# What all sources are compiled with; tomex_settings adds the sanitizers to it.
add_library(tomex_plain_settings INTERFACE)
target_compile_options(tomex_plain_settings INTERFACE
    -Wall -Wextra -Wshadow -Wconversion -Wsign-conversion
    # Source names in internal-fault reports count from the project's root, whatever the
    # folder that the build ran in.
    -ffile-prefix-map=${CMAKE_SOURCE_DIR}/=)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # This compiler sees overlapping copies in plain assignments to std::string where there are
    # none. The first option is for clang-tidy, which reads the same command lines and does not
    # know the second.
    target_compile_options(tomex_plain_settings INTERFACE -Wno-unknown-warning-option -Wno-restrict)
endif()
if(TOMEX_WERROR)
    target_compile_options(tomex_plain_settings INTERFACE -Werror)
endif()
# Files of 2 GiB and more on 32-bit hosts too.
target_compile_definitions(tomex_plain_settings INTERFACE _FILE_OFFSET_BITS=64)
target_include_directories(tomex_plain_settings INTERFACE ${CMAKE_SOURCE_DIR})

add_library(tomex_settings INTERFACE)
target_link_libraries(tomex_settings INTERFACE tomex_plain_settings)
if(TOMEX_SANITIZE)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # The sanitizers' own code keeps this compiler from seeing that a value is set: it calls
        # values unset inside the standard library. The release build has the warning on.
        target_compile_options(tomex_settings INTERFACE -Wno-maybe-uninitialized)
    endif()
    set(sanitizers -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_options(tomex_settings INTERFACE ${sanitizers})
    target_link_options(tomex_settings INTERFACE ${sanitizers})
endif()
