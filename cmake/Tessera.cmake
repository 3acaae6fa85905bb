# The few shapes that every target of the project has.

# Compiler settings that every target of ours shares.
add_library(tessera_settings INTERFACE)
target_compile_features(tessera_settings INTERFACE cxx_std_20)
target_compile_options(tessera_settings INTERFACE -Wall -Wextra -Wconversion -Wshadow -Werror)
if(WIN32)
    # Only the W functions are called, Windows 7 and later.
    target_compile_definitions(tessera_settings INTERFACE
        UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0601 STRICT)
    if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
        # GCC leaves signs out of -Wconversion, and Windows has both for one thing.
        target_compile_options(tessera_settings INTERFACE -Wno-sign-conversion)
    endif()
endif()
if(WIN32)
    # A program finds the libraries that it is linked with beside it.
    set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
endif()
if(TESSERA_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer -O1)
    add_link_options(-fsanitize=address,undefined)
    if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
        # The same libraries serve the fuzz targets.
        add_compile_options(-fsanitize=fuzzer-no-link)
    endif()
endif()

# Header-only Debian packages, staged so that the cross build sees these headers and no others.
set(TESSERA_STAGED_INCLUDE ${CMAKE_BINARY_DIR}/staged/include)
foreach(_package nlohmann CLI)
    if(NOT EXISTS ${TESSERA_STAGED_INCLUDE}/${_package} AND EXISTS /usr/include/${_package})
        file(COPY /usr/include/${_package} DESTINATION ${TESSERA_STAGED_INCLUDE})
    endif()
endforeach()
add_library(tessera_staged INTERFACE)
target_include_directories(tessera_staged SYSTEM INTERFACE ${TESSERA_STAGED_INCLUDE})

# The version, for sources and resource scripts: <tessera_version.h>.
set(TESSERA_VERSION_HEADER ${CMAKE_BINARY_DIR}/version/tessera_version.h)
configure_file(${CMAKE_CURRENT_LIST_DIR}/version.h.in ${TESSERA_VERSION_HEADER} @ONLY)
add_library(tessera_version INTERFACE)
target_include_directories(tessera_version INTERFACE ${CMAKE_BINARY_DIR}/version)

# tessera_file_properties(TARGET ENGLISH CHINESE)
# Gives a Windows program or library its version information, with the description in both
# languages, and a program its icon.
set(TESSERA_ICON ${PROJECT_SOURCE_DIR}/resources/bitmaps/workbench.ico)
set(TESSERA_VERSION_INFO ${CMAKE_CURRENT_LIST_DIR}/versioninfo.rc.in)
function(tessera_file_properties target english chinese)
    if(NOT WIN32)
        return()
    endif()
    set(_type VFT_DLL)
    set(_icon "")
    get_target_property(_kind ${target} TYPE)
    if(_kind STREQUAL "EXECUTABLE")
        set(_type VFT_APP)
        set(_icon "1 ICON \"${TESSERA_ICON}\"")
    endif()
    set(_script ${CMAKE_CURRENT_BINARY_DIR}/${target}.version.rc)
    configure_file(${TESSERA_VERSION_INFO} ${_script}.in @ONLY)
    file(GENERATE OUTPUT ${_script} INPUT ${_script}.in)
    set_source_files_properties(${_script} PROPERTIES OBJECT_DEPENDS ${TESSERA_ICON})
    target_sources(${target} PRIVATE ${_script})
endfunction()

# Most of what a compiler reads is headers of the standard library, of Windows and of GoogleTest: they
# are read once for all. Not so where sources are optimised for measuring, and each must name what it
# needs.
set(_common <algorithm> <array> <charconv> <cmath> <cstdint> <cstring> <functional> <map> <memory>
    <optional> <set> <span> <string> <string_view> <tuple> <unordered_map> <unordered_set> <utility>
    <variant> <vector>)
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/precompiled.cpp CONTENT "")
if(WIN32 OR TESSERA_PACKAGE OR TESSERA_SANITIZE)
    foreach(_kind precompiled precompiled_windows)
        add_library(tessera_${_kind} OBJECT EXCLUDE_FROM_ALL ${CMAKE_BINARY_DIR}/precompiled.cpp)
        set_target_properties(tessera_${_kind} PROPERTIES POSITION_INDEPENDENT_CODE ON)
        target_link_libraries(tessera_${_kind} PRIVATE tessera_settings)
        target_precompile_headers(tessera_${_kind} PRIVATE ${_common})
    endforeach()
    if(WIN32)
        # Not <windowsx.h>, whose macros have the names of functions of ours.
        target_precompile_headers(tessera_precompiled_windows PRIVATE <windows.h> <commctrl.h>)
    endif()
endif()
# tessera_precompile(TARGET [_windows])
# With _windows, for what consists of windows.
function(tessera_precompile target)
    if(TARGET tessera_precompiled)
        target_precompile_headers(${target} REUSE_FROM tessera_precompiled${ARGN})
        if(MINGW)
            # Precompiled, the library's own headers are no longer those of the system, of which
            # nothing is said; and this GCC takes copies of short texts for too long.
            target_compile_options(${target} PRIVATE -Wno-array-bounds -Wno-restrict
                                                     -Wno-stringop-overflow -Wno-stringop-overread)
        endif()
    endif()
endfunction()

# What all test programs have in common. Their own code is not optimised: it is compiled far more often
# than it runs.
add_library(tessera_test_settings INTERFACE)
target_link_libraries(tessera_test_settings INTERFACE tessera_settings GTest::gmock GTest::gtest_main)
target_compile_options(tessera_test_settings INTERFACE -O0)
if(MINGW)
    # This GCC finds overlaps and frees that are not there where tests put texts together.
    target_compile_options(tessera_test_settings INTERFACE -Wno-restrict -Wno-free-nonheap-object)
endif()
add_library(tessera_test_precompiled OBJECT EXCLUDE_FROM_ALL ${CMAKE_BINARY_DIR}/precompiled.cpp)
target_link_libraries(tessera_test_precompiled PRIVATE tessera_test_settings)
target_precompile_headers(tessera_test_precompiled PRIVATE ${_common} <filesystem> <fstream>
    <gmock/gmock.h> <gtest/gtest.h>)

# tessera_library(NAME [WINDOWS] SOURCES file... [USES target...] [PRIVATE_USES target...])
# A static library whose public headers live in include/ beside its CMakeLists.txt. WINDOWS says that
# it consists of windows.
function(tessera_library name)
    cmake_parse_arguments(ARG "WINDOWS" "" "SOURCES;USES;PRIVATE_USES" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON)
    target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/include
                                       PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/src)
    target_link_libraries(${name} PUBLIC ${ARG_USES} PRIVATE tessera_settings ${ARG_PRIVATE_USES})
    target_compile_features(${name} PUBLIC cxx_std_20)
    if(ARG_WINDOWS)
        tessera_precompile(${name} _windows)
    else()
        tessera_precompile(${name})
    endif()
endfunction()

# tessera_texts(NAME FILE [SUFFIX])
# The texts for users of the library NAME, in the form that base/texttable.h describes; further ones of
# the same library have a SUFFIX. Natively the library includes FILE itself. For Windows this makes
# string tables of it, one for each language, for the program or DLL that the library ends up in, or
# that it is.
function(tessera_texts name file)
    set(_texts ${name}${ARGN}_texts)
    if(NOT WIN32)
        return()
    endif()
    set(TESSERA_TEXTS ${CMAKE_CURRENT_SOURCE_DIR}/${file})
    set(_script ${CMAKE_CURRENT_BINARY_DIR}/${_texts}.rc)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/texts.rc.in ${_script} @ONLY)
    set_source_files_properties(${_script} PROPERTIES OBJECT_DEPENDS ${TESSERA_TEXTS})
    get_target_property(_type ${name} TYPE)
    if(_type STREQUAL "STATIC_LIBRARY")
        # The linker would drop them from the library itself.
        add_library(${_texts} OBJECT ${_script})
        target_link_libraries(${name} INTERFACE $<TARGET_OBJECTS:${_texts}>)
    else()
        target_sources(${name} PRIVATE ${_script})
    endif()
endfunction()

# tessera_host_texts(NAME NAMESPACE FILE)
# The same, for one that speaks the host's language. The header `texts.h` beside FILE declares
# NAMESPACE's function `textOf`, which this defines.
function(tessera_host_texts name namespace file)
    set(TESSERA_TEXTS ${CMAKE_CURRENT_SOURCE_DIR}/${file})
    string(REPLACE .inc .h TESSERA_TEXTS_HEADER ${TESSERA_TEXTS})
    set(TESSERA_TEXTS_NAMESPACE ${namespace})
    set(_source ${CMAKE_CURRENT_BINARY_DIR}/${name}_texts.cpp)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/texts.cpp.in ${_source} @ONLY)
    target_sources(${name} PRIVATE ${_source})
    tessera_texts(${name} ${file})
endfunction()

# tessera_test(NAME SOURCES file... USES target... [TIMEOUT seconds])
# A GoogleTest program. Natively every test is its own CTest entry; under Wine, where starting a
# process is slow, the program is one entry. Both have a time limit.
function(tessera_test name)
    cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;USES" ${ARGN})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE tessera_test_settings ${ARG_USES})
    target_precompile_headers(${name} REUSE_FROM tessera_test_precompiled)
    if(WIN32)
        # The host's core is a DLL, which a program finds beside itself.
        add_custom_command(TARGET ${name} POST_BUILD COMMAND ${CMAKE_COMMAND} -E
            $<IF:$<BOOL:$<TARGET_RUNTIME_DLLS:${name}>>,copy_if_different$<SEMICOLON>$<TARGET_RUNTIME_DLLS:${name}>$<SEMICOLON>$<TARGET_FILE_DIR:${name}>,true>
            COMMAND_EXPAND_LISTS VERBATIM)
        add_test(NAME ${name} COMMAND ${name} WORKING_DIRECTORY $<TARGET_FILE_DIR:${name}>)
        set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT})
    else()
        gtest_discover_tests(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT} DISCOVERY_TIMEOUT 60)
    endif()
endfunction()

# tessera_test_small_heap(NAME)
# Under the sanitizers all tests of a program run once more, in one process, with the core's own heap.
function(tessera_test_small_heap name)
    if(TESSERA_SANITIZE)
        target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support/smallheap.cpp)
        add_test(NAME ${name}.small_heap COMMAND ${name} --gtest_brief=1)
        set_tests_properties(${name}.small_heap PROPERTIES
            TIMEOUT 300 ENVIRONMENT TESSERA_SMALL_HEAP=1)
    endif()
endfunction()

# tessera_never_links(TARGET target...)
# Fails the configuration when TARGET links one of the others, however far down. To be called once
# all targets are there.
function(tessera_never_links name)
    set(_open ${name})
    set(_seen)
    while(_open)
        list(POP_FRONT _open _target)
        if(NOT TARGET ${_target} OR _target IN_LIST _seen)
            continue()
        endif()
        list(APPEND _seen ${_target})
        foreach(_property LINK_LIBRARIES INTERFACE_LINK_LIBRARIES)
            get_target_property(_linked ${_target} ${_property})
            if(_linked)
                string(REGEX REPLACE "\\$<LINK_ONLY:([^>]*)>" "\\1" _linked "${_linked}")
                list(APPEND _open ${_linked})
            endif()
        endforeach()
    endwhile()
    foreach(_forbidden ${ARGN})
        if(_forbidden IN_LIST _seen)
            message(FATAL_ERROR "${name} must not link ${_forbidden}")
        endif()
    endforeach()
endfunction()
