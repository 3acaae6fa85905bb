# tessera-tools, a Debian package: the command lines, their manual pages and completion.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tessera-tools)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "snakemake, slurm-client")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "command line tools for OpenFlight scene-graph files")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"fltool looks into files of the OpenFlight scene-graph format, checks them
and converts them between revisions. kilnbatch imports them, runs scripts
over their hierarchies and attributes, and exports them again, one file or
a thousand.")

install(TARGETS fltool kilnbatch RUNTIME DESTINATION bin)

# compressed(SOURCE RESULT): the file with its values filled in, as packages want it.
find_program(TESSERA_GZIP gzip REQUIRED)
set(_compressed)
macro(compressed source result)
    configure_file(linux/${source}.in ${result} @ONLY)
    add_custom_command(OUTPUT ${result}.gz
        COMMAND ${TESSERA_GZIP} -9 -n -f -k ${result} DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/${result}
        VERBATIM)
    list(APPEND _compressed ${CMAKE_CURRENT_BINARY_DIR}/${result}.gz)
endmacro()
compressed(fltool.1 fltool.1)
compressed(kilnbatch.1 kilnbatch.1)
compressed(changelog changelog)
add_custom_target(package_contents DEPENDS fltool kilnbatch ${_compressed})

set(_build ${CMAKE_CURRENT_BINARY_DIR})
set(_documents share/doc/${CPACK_PACKAGE_NAME})
install(FILES ${_build}/fltool.1.gz ${_build}/kilnbatch.1.gz DESTINATION share/man/man1)
install(FILES ${_build}/changelog.gz linux/copyright ${PROJECT_SOURCE_DIR}/docs/fltool.md
              ${PROJECT_SOURCE_DIR}/docs/checks.md ${PROJECT_SOURCE_DIR}/docs/cluster.md
              ${PROJECT_SOURCE_DIR}/docs/palettes.md ${PROJECT_SOURCE_DIR}/docs/scripting.md
        DESTINATION ${_documents})
install(FILES ${PROJECT_SOURCE_DIR}/samples/lodpreview.ks DESTINATION ${_documents}/examples)
package_licences("${_licences}" ${_documents} Unspecified)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/cluster DESTINATION share/${CPACK_PACKAGE_NAME}
        USE_SOURCE_PERMISSIONS PATTERN __pycache__ EXCLUDE)
foreach(_program fltool kilnbatch)
    install(FILES linux/${_program}.bash DESTINATION share/bash-completion/completions
            RENAME ${_program})
endforeach()
include(CPack)
