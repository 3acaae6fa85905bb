# The same by clang, which reads the cross compiler's library. What it compiles is not linked.
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64.cmake)
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=include/c++
    OUTPUT_VARIABLE _headers OUTPUT_STRIP_TRAILING_WHITESPACE)
foreach(_language C CXX)
    set(CMAKE_${_language}_COMPILER_TARGET x86_64-w64-mingw32)
    set(CMAKE_${_language}_FLAGS_INIT -Wno-unknown-warning-option)
endforeach()
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
string(APPEND CMAKE_CXX_FLAGS_INIT " -nostdinc++ -isystem ${_headers} -isystem ${_headers}/x86_64-w64-mingw32")
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
