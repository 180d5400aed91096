# What every target of ours shares: language level, warnings as errors, arithmetic that does not
# depend on the machine, and the two functions that declare a library and a test program.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

find_program(KELVARO_CCACHE ccache)
if(KELVARO_CCACHE)
    # ccache keeps sources that use a precompiled header only when told that this is wanted.
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
        CCACHE_SLOPPINESS=pch_defines,time_macros ${KELVARO_CCACHE})
endif()
find_program(KELVARO_LLD NAMES ld.lld ld.lld-14)
if(KELVARO_LLD AND CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    add_link_options(-fuse-ld=lld)
endif()

add_library(kelvaro_options INTERFACE)
target_include_directories(kelvaro_options INTERFACE ${CMAKE_SOURCE_DIR}/src)
# Contraction is off so that a picture never depends on which products a compiler chose to fuse.
target_compile_options(kelvaro_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor
    -Woverloaded-virtual -Werror -ffp-contract=off -fno-math-errno)
# gcc warns of members that a designated initializer leaves to their defaults, which is its point.
target_compile_options(kelvaro_options INTERFACE
    $<$<CXX_COMPILER_ID:GNU>:-Wno-missing-field-initializers>)
if(KELVARO_SANITIZE)
    add_compile_options(-fsanitize=${KELVARO_SANITIZE} -fno-omit-frame-pointer
        -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${KELVARO_SANITIZE})
endif()

# kelvaro_library(NAME SOURCES ... [LINKS ...] [PRIVATE_LINKS ...])
function(kelvaro_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
    add_library(kelvaro_${name} STATIC ${ARG_SOURCES})
    target_link_libraries(kelvaro_${name} PUBLIC kelvaro_options ${ARG_LINKS}
        PRIVATE ${ARG_PRIVATE_LINKS})
endfunction()

# kelvaro_test(NAME SOURCES ... LINKS ...): one GoogleTest program, found by ctest case by case.
function(kelvaro_test name)
    cmake_parse_arguments(ARG "" "LABEL" "SOURCES;LINKS" ${ARGN})
    add_executable(test_${name} ${ARG_SOURCES})
    target_include_directories(test_${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
    target_link_libraries(test_${name} PRIVATE kelvaro_options kelvaro_places ${ARG_LINKS}
        GTest::gtest GTest::gmock GTest::gtest_main)
    # gcc 12 takes the joining of short texts for copies that overlap (its bug 105651).
    target_compile_options(test_${name} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
    gtest_discover_tests(test_${name} DISCOVERY_TIMEOUT 60
        PROPERTIES TIMEOUT 300 LABELS "${ARG_LABEL}")
endfunction()
