# SPDX-License-Identifier: GPL-3.0-or-later
# What every target of ours is compiled with, in one place. Whether a warning is an error is not decided here but by
# CMAKE_COMPILE_WARNING_AS_ERROR, so that a newer compiler's new warning does not break anybody's build of a release.
add_library(varnock_options INTERFACE)
target_compile_options(varnock_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
target_compile_definitions(varnock_options INTERFACE
    QT_NO_CAST_FROM_BYTEARRAY QT_DISABLE_DEPRECATED_BEFORE=0x060400)
if(VARNOCK_SANITIZE)
    target_compile_options(varnock_options INTERFACE
        -fsanitize=${VARNOCK_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(varnock_options INTERFACE -fsanitize=${VARNOCK_SANITIZE})
endif()

# A build from clean takes half the time when Qt's headers are read once for all targets with windows, and eight files of
# a layer are compiled as one. Not with a compiler cache, which serves better without.
if(VARNOCK_FROM_CLEAN AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_UNITY_BUILD ON)
    set(CMAKE_UNITY_BUILD_BATCH_SIZE 8)
    file(CONFIGURE OUTPUT precompiled.cpp CONTENT "")
    add_library(varnock_precompiled STATIC ${PROJECT_BINARY_DIR}/precompiled.cpp)
    target_link_libraries(varnock_precompiled PRIVATE Qt6::Widgets varnock_options)
    target_precompile_headers(varnock_precompiled PRIVATE <QtWidgets>)
endif()
function(varnock_precompile target)
    get_target_property(links ${target} LINK_LIBRARIES)
    if(TARGET varnock_precompiled AND links MATCHES "Qt6::Widgets|varnock_(widgets|editor|history|transfer|shell)")
        target_precompile_headers(${target} REUSE_FROM varnock_precompiled)
    endif()
endfunction()

# A layer of the program: varnock_layer(name SOURCES ... LINKS ...). LINKS is all that the layer may include from: each
# layer's folder is seen through a link of its own, not through src/, where every include would be found.
function(varnock_layer name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    set(root ${PROJECT_BINARY_DIR}/layers/${name}/src)
    cmake_path(GET CMAKE_CURRENT_SOURCE_DIR FILENAME folder)
    file(MAKE_DIRECTORY ${root})
    file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${root}/${folder} SYMBOLIC)
    target_include_directories(${name} PUBLIC ${root})
    target_link_libraries(${name} PUBLIC ${ARG_LINKS} PRIVATE varnock_options)
    varnock_precompile(${name})
endfunction()

# Runs moc on a test's NAME.cpp, which includes NAME.moc. AUTOMOC would read every header that it includes, and compile
# a second file; with this many tests that is a quarter of a build.
function(varnock_moc name)
    qt_generate_moc(${name}.cpp ${CMAKE_CURRENT_BINARY_DIR}/${name}.moc)
    target_sources(${name} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${name}.moc)
    target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_BINARY_DIR})
endfunction()

# A Qt Test program that ctest runs: varnock_test(name SOURCES ... LINKS ... [ARGUMENTS ...]).
# Windows open off screen and settings go to a folder of the test's own, never the user's.
function(varnock_test name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS;ARGUMENTS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/tests)
    target_link_libraries(${name} PRIVATE ${ARG_LINKS} Qt6::Test varnock_options)
    varnock_precompile(${name})
    file(STRINGS ${name}.cpp classes REGEX "Q_OBJECT")
    if(classes)
        varnock_moc(${name})
    endif()
    add_test(NAME ${name} COMMAND ${name} ${ARG_ARGUMENTS})
    set(settings ${CMAKE_CURRENT_BINARY_DIR}/${name}_home)
    file(MAKE_DIRECTORY ${settings})
    # Some tests fork a process that then starts threads, which the sanitizer takes for a mistake.
    set(tsan "TSAN_OPTIONS=ignore_noninstrumented_modules=1:die_after_fork=0:halt_on_error=1:second_deadlock_stack=1")
    set(lsan "LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/lsan.supp:print_suppressions=0")
    set_tests_properties(${name} PROPERTIES TIMEOUT 300 ENVIRONMENT
        "QT_QPA_PLATFORM=offscreen;XDG_CONFIG_HOME=${settings};XDG_DATA_HOME=${settings};XDG_RUNTIME_DIR=${settings};${tsan};${lsan}")
endfunction()
