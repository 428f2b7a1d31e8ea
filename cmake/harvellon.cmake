# What every target of this project shares: warnings as errors, strict strings, one precompiled header.
add_library(harvellon_options INTERFACE)
target_compile_options(harvellon_options INTERFACE
    -pthread -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Werror)
option(HARVELLON_STRICT "Warnings are errors; off where people build with a compiler that we have not seen" ON)
if(NOT HARVELLON_STRICT)
    target_compile_options(harvellon_options INTERFACE -Wno-error)
endif()
target_compile_definitions(harvellon_options INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING
    QT_NO_KEYWORDS QT_DISABLE_DEPRECATED_BEFORE=0x060400)

# Compiled once and shared, because it takes longer than most sources. All targets that use it need the same options.
add_library(harvellon_pch OBJECT ${CMAKE_CURRENT_LIST_DIR}/pch.cpp)
target_link_libraries(harvellon_pch PRIVATE harvellon_options Qt6::Core)
target_precompile_headers(harvellon_pch PRIVATE ${CMAKE_CURRENT_LIST_DIR}/pch.h)

# harvellon_library(name SOURCES... ): a static library of one folder.
function(harvellon_library name)
    add_library(${name} STATIC ${ARGN})
    target_link_libraries(${name} PRIVATE harvellon_options)
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/HarvellonConnect)
    target_precompile_headers(${name} REUSE_FROM harvellon_pch)
endfunction()

# harvellon_not_here(name reason): a test that ctest lists as skipped. ./dev test tells the reason.
function(harvellon_not_here name reason)
    add_test(NAME ${name} COMMAND ${CMAKE_COMMAND} -E echo "${reason}")
    set_tests_properties(${name} PROPERTIES SKIP_REGULAR_EXPRESSION ".")
    set_property(GLOBAL APPEND PROPERTY HARVELLON_NOT_HERE "${name}: ${reason}")
endfunction()

# harvellon_test(name SOURCES ... LIBRARIES ... [NEEDS what only Linux has]): a Qt Test program that ctest runs.
function(harvellon_test name)
    cmake_parse_arguments(TEST "" "TIMEOUT;NEEDS" "SOURCES;LIBRARIES" ${ARGN})
    if(APPLE AND TEST_NEEDS)
        harvellon_not_here(${name} "needs ${TEST_NEEDS}")
        return()
    endif()
    if(NOT TEST_TIMEOUT)
        set(TEST_TIMEOUT 120)
    endif()
    add_executable(${name} ${TEST_SOURCES})
    target_link_libraries(${name} PRIVATE harvellon_options Qt6::Test ${TEST_LIBRARIES})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/tests)
    target_precompile_headers(${name} REUSE_FROM harvellon_pch)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT ${TEST_TIMEOUT})
endfunction()
