# How a module, a test and a program of this tree are made.
#
# A module sees only itself and the modules in its LINKS: its headers are reached through a folder that holds
# nothing but a link to it, so that `#include "OrvProcess/PortParser.h"` compiles only where OrvProcess is linked.

# The allowed edges. Whoever adds one, adds it here and to the picture in ARCHITECTURE.md.
set(ORV_EDGES_TermEngine "")
set(ORV_EDGES_OrvCore "")
set(ORV_EDGES_OrvProcess OrvCore)
set(ORV_EDGES_OrvTerminal OrvCore TermEngine)
set(ORV_EDGES_OrvTerminalView OrvCore OrvTerminal TermEngine)
set(ORV_EDGES_OrvGit OrvCore)
set(ORV_EDGES_OrvUI OrvCore OrvGit OrvProcess OrvTerminal)
set(ORV_EDGES_OrvScreens OrvCore OrvGit OrvProcess OrvTerminal OrvTerminalView OrvUI)
set(ORV_EDGES_OrvPlatform OrvCore OrvGit OrvProcess OrvUI)

add_library(orv_options INTERFACE)
target_compile_options(orv_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor
    -Woverloaded-virtual -Werror)
# The stable_sort of GCC 12's library takes what its own header calls deprecated, which Clang says to whoever uses it.
target_compile_options(orv_options INTERFACE $<$<CXX_COMPILER_ID:Clang>:-Wno-deprecated-declarations>)
target_compile_definitions(orv_options INTERFACE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII
    QT_NO_FOREACH QT_DISABLE_DEPRECATED_BEFORE=0x060400 ORV_VERSION="${PROJECT_VERSION}")
if(ORV_SANITIZE)
    target_compile_options(orv_options INTERFACE -fsanitize=${ORV_SANITIZE} -fno-omit-frame-pointer
        -fno-sanitize-recover=all)
    target_link_options(orv_options INTERFACE -fsanitize=${ORV_SANITIZE})
endif()

# Half a hundred programs are linked in a developer's build.
find_program(ORV_MOLD mold)
if(ORV_MOLD AND NOT CMAKE_CROSSCOMPILING AND CMAKE_BUILD_TYPE STREQUAL "Debug" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_link_options(orv_options INTERFACE -fuse-ld=mold)
endif()

function(_orv_include_link name folder)
    set(parent ${CMAKE_BINARY_DIR}/include/${name})
    cmake_path(GET folder PARENT_PATH above)
    file(MAKE_DIRECTORY ${parent}/${above})
    if(NOT EXISTS ${parent}/${folder})
        file(CREATE_LINK ${CMAKE_SOURCE_DIR}/${folder} ${parent}/${folder} SYMBOLIC)
    endif()
    target_include_directories(${name} PUBLIC ${parent})
endfunction()

# Qt's headers and the standard library's, compiled once for all sources of `name`, or taken from a target that has done
# so (`from`). Sources include what they use nevertheless: clang-tidy reads them without.
function(_orv_precompiled name from)
    if(ORV_PCH AND from)
        target_precompile_headers(${name} REUSE_FROM ${from})
    elseif(ORV_PCH)
        target_precompile_headers(${name} PRIVATE ${ARGN})
    endif()
endfunction()

# orv_module(NAME [FOLDER folder] SOURCES ... [HEADERS ...] [MODULES our modules] [LIBRARIES others])
function(orv_module name)
    cmake_parse_arguments(arg "" "FOLDER" "SOURCES;HEADERS;MODULES;LIBRARIES" ${ARGN})
    if(NOT DEFINED ORV_EDGES_${name})
        message(FATAL_ERROR "${name} is not in the table of modules (cmake/OrvModule.cmake)")
    endif()
    foreach(module IN LISTS arg_MODULES)
        if(NOT module IN_LIST ORV_EDGES_${name})
            message(FATAL_ERROR "${name} may not link ${module}: the edge is not in cmake/OrvModule.cmake")
        endif()
    endforeach()
    if(NOT arg_FOLDER)
        set(arg_FOLDER ${name})
    endif()
    add_library(${name} STATIC ${arg_SOURCES} ${arg_HEADERS})
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
    target_link_libraries(${name} PUBLIC ${arg_MODULES} ${arg_LIBRARIES} PRIVATE orv_options)
    _orv_include_link(${name} ${arg_FOLDER})
    if(name STREQUAL OrvCore)
        _orv_precompiled(OrvCore "" ${CMAKE_SOURCE_DIR}/cmake/Precompiled.h)
    elseif("Qt6::Quick" IN_LIST arg_LIBRARIES)
        _orv_precompiled(${name} "" ${CMAKE_SOURCE_DIR}/cmake/Precompiled.h <QtQuick/QtQuick>)
    elseif("Qt6::Core" IN_LIST arg_LIBRARIES)
        _orv_precompiled(${name} OrvCore)
    endif()
endfunction()

# orv_program(NAME SOURCES ... [MODULES ...] [LIBRARIES ...]): an executable of the tree.
function(orv_program name)
    cmake_parse_arguments(arg "" "" "SOURCES;MODULES;LIBRARIES" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
    target_link_libraries(${name} PRIVATE ${arg_MODULES} ${arg_LIBRARIES} orv_options)
    if(orv_test_support IN_LIST arg_MODULES)
        _orv_precompiled(${name} orv_test_support)
    elseif("Qt6::Core" IN_LIST arg_LIBRARIES)
        _orv_precompiled(${name} OrvCore)
    endif()
endfunction()

# orv_test(NAME SOURCES ... [MODULES ...] [LIBRARIES ...] [TIMEOUT s] [SERIAL]): one GoogleTest program, one entry of CTest. The
# main function (tests/support/TestMain.cpp) makes a QCoreApplication and a support folder of the test's own.
function(orv_test name)
    cmake_parse_arguments(arg "SERIAL" "TIMEOUT" "SOURCES;MODULES;LIBRARIES" ${ARGN})
    orv_program(${name} SOURCES ${arg_SOURCES} MODULES ${arg_MODULES} orv_test_support LIBRARIES ${arg_LIBRARIES})
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 120)
    endif()
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT ${arg_TIMEOUT})
    if(arg_SERIAL)
        set_tests_properties(${name} PROPERTIES RUN_SERIAL ON)
    endif()
endfunction()

# orv_engine_test(NAME SOURCES ... [TIMEOUT s]): a GoogleTest program of the engine, which links no Qt.
function(orv_engine_test name)
    cmake_parse_arguments(arg "" "TIMEOUT" "SOURCES" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE TermEngine GTest::gtest_main orv_options)
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 120)
    endif()
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT ${arg_TIMEOUT})
endfunction()
