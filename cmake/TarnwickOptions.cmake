# What every target of this project is compiled with: the language, the warnings, the sanitizers.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_CXX_SCAN_FOR_MODULES OFF)

add_library(tarnwick_options INTERFACE)
target_include_directories(tarnwick_options INTERFACE ${CMAKE_SOURCE_DIR})
target_compile_options(tarnwick_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
# So that the linker can leave out what is not used.
target_compile_options(tarnwick_options INTERFACE $<$<CONFIG:Release>:-ffunction-sections>)
target_compile_definitions(tarnwick_options INTERFACE _FILE_OFFSET_BITS=64)

# What a mistake in memory can be used for, made small; what distributions ask for. Fortifying needs the optimizer.
if(NOT TARNWICK_SANITIZE AND NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
    target_compile_options(tarnwick_options INTERFACE
        -fPIE -fstack-protector-strong -fstack-clash-protection -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
    target_link_options(tarnwick_options INTERFACE -pie LINKER:-z,relro,-z,now)
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|i.86")
        target_compile_options(tarnwick_options INTERFACE -fcf-protection)
    elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "aarch64")
        target_compile_options(tarnwick_options INTERFACE -mbranch-protection=standard)
    endif()
endif()

if(TARNWICK_SANITIZE)
    target_compile_options(tarnwick_options INTERFACE
        -fsanitize=${TARNWICK_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(tarnwick_options INTERFACE -fsanitize=${TARNWICK_SANITIZE})
endif()

# Links in a quarter of the usual linker's time. Released programs are linked by the usual one.
find_program(TARNWICK_MOLD mold)
if(TARNWICK_MOLD AND (TARNWICK_SANITIZE OR CMAKE_BUILD_TYPE STREQUAL "Debug"))
    target_link_options(tarnwick_options INTERFACE -fuse-ld=mold)
endif()

# tarnwick_precompile(TARGET <header>... | TARGET REUSE_FROM other): headers that the compiler reads once for the target
# instead of once a source. Only under sanitizers: the other builds show that every source includes what it uses.
function(tarnwick_precompile target)
    if(NOT TARNWICK_SANITIZE)
        return()
    elseif(ARGV1 STREQUAL REUSE_FROM)
        target_precompile_headers(${target} REUSE_FROM ${ARGV2})
        target_compile_options(${target} PRIVATE $<TARGET_PROPERTY:${ARGV2},COMPILE_OPTIONS>)
    else()
        target_precompile_headers(${target} PRIVATE ${ARGN})
    endif()
endfunction()
