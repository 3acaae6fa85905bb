# Two archives: the modules for the host's plug-in folder, and the workbench with everything, to try
# without a host.
set(CPACK_GENERATOR ZIP)
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL plugins workbench)
set(CPACK_COMPONENT_INCLUDE_TOPLEVEL_DIRECTORY OFF)
set(CPACK_ARCHIVE_PLUGINS_FILE_NAME tessera-${PROJECT_VERSION}-plugins)
set(CPACK_ARCHIVE_WORKBENCH_FILE_NAME tessera-${PROJECT_VERSION}-workbench)

# The documents as pages, which every Windows shows with their pictures.
find_program(TESSERA_CMARK cmark-gfm REQUIRED)
set(_pages)
function(page document language)
    set(_in ${PROJECT_SOURCE_DIR}/docs/${document}.md)
    set(_out ${CMAKE_CURRENT_BINARY_DIR}/pages/${document}.html)
    set(_here ${CMAKE_CURRENT_SOURCE_DIR})
    add_custom_command(OUTPUT ${_out}
        COMMAND ${CMAKE_COMMAND} -DCMARK=${TESSERA_CMARK} -DIN=${_in} -DOUT=${_out} -DLANGUAGE=${language}
                -DTEMPLATE=${_here}/page.html.in -P ${_here}/page.cmake
        DEPENDS ${_in} page.cmake page.html.in VERBATIM)
    set(_pages ${_pages} ${_out} PARENT_SCOPE)
endfunction()
page(user-guide en)
page(user-guide.zh-CN zh-CN)
page(scripting en)
page(fltool en)
page(checks en)
page(palettes en)
add_custom_target(package_contents ALL DEPENDS stage ${_pages})

# Part of the compiler's runtime is within Windows programs.
list(APPEND _licences /usr/share/doc/gcc-mingw-w64-x86-64-posix-runtime/copyright
                      /usr/share/doc/mingw-w64-x86-64-dev/copyright)

set(_modules Tessera FltCheck FltInterchange FltPalettes FltKilnUtilRes)

# package_texts(COMPONENT FOLDER README): what there is to read, with the line ends of the platform.
function(package_texts component folder readme)
    set(_texts ${CMAKE_CURRENT_BINARY_DIR}/${component})
    configure_file(${PROJECT_SOURCE_DIR}/LICENSE ${_texts}/LICENSE.txt @ONLY NEWLINE_STYLE CRLF)
    configure_file(windows/${readme}.txt ${_texts}/README.txt @ONLY NEWLINE_STYLE CRLF)
    configure_file(windows/${readme}.zh-CN.txt ${_texts}/README.zh-CN.txt @ONLY NEWLINE_STYLE CRLF)
    install(DIRECTORY ${_texts}/ DESTINATION ${folder} COMPONENT ${component})
    package_licences("${_licences}" ${folder}/licences ${component})
    install(FILES ${_pages} DESTINATION ${folder}/docs COMPONENT ${component})
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/images DESTINATION ${folder}/docs
            COMPONENT ${component})
endfunction()

# The modules lie at the top, for those who unpack straight into the plug-in folder.
install(TARGETS ${_modules} LIBRARY DESTINATION . COMPONENT plugins)
package_texts(plugins Tessera README)

set(_folder tessera-workbench-${PROJECT_VERSION})
install(TARGETS workbench kilnbatch fltool kilncore RUNTIME DESTINATION ${_folder}
        COMPONENT workbench)
install(TARGETS ${_modules} LIBRARY DESTINATION ${_folder}/plugins COMPONENT workbench)
# The sample is written by its program, under Wine: see `./dev package`.
install(FILES ${PROJECT_BINARY_DIR}/stage/samples/airport.flt
              ${PROJECT_SOURCE_DIR}/samples/lodpreview.ks DESTINATION ${_folder}/samples
        COMPONENT workbench)
package_texts(workbench ${_folder} workbench-README)
include(CPack)
