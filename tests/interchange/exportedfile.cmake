# Imports the sample, edits it with a script, exports it, and has fltool check the result.
file(MAKE_DIRECTORY ${FOLDER})
execute_process(COMMAND ${MAKE_SAMPLES} ${FOLDER} RESULT_VARIABLE _result)
if(NOT _result EQUAL 0)
    message(FATAL_ERROR "the sample could not be made")
endif()
set(_script ${FOLDER}/edit.ks)
set(_out ${FOLDER}/exported.flt)
file(WRITE ${_script} "tower = nodeByName \"塔台 control tower\"\ntower.name = \"another long name of a tower\"\n")
file(REMOVE ${_out})
execute_process(COMMAND ${KILNBATCH} --import ${FOLDER}/airport.flt --export ${_out} ${_script}
                RESULT_VARIABLE _result OUTPUT_VARIABLE _said ERROR_VARIABLE _said)
if(NOT _result EQUAL 0 OR NOT _said MATCHES "exported [0-9]+ nodes")
    message(FATAL_ERROR "kilnbatch: ${_said}")
endif()
execute_process(COMMAND ${FLTOOL} check ${_out}
                RESULT_VARIABLE _result OUTPUT_VARIABLE _said ERROR_VARIABLE _said)
if(NOT _result EQUAL 0 OR NOT _said STREQUAL "")
    message(FATAL_ERROR "fltool: ${_said}")
endif()
file(STRINGS ${_out} _new REGEX "another long name of a tower")
file(STRINGS ${_out} _old REGEX "control tower")
if(_new STREQUAL "" OR NOT _old STREQUAL "")
    message(FATAL_ERROR "the file has not got the new name alone: ${_new} ${_old}")
endif()

# Of several databases it must be told which one to write, and says which there are.
file(COPY_FILE ${FOLDER}/airport.flt ${FOLDER}/other.flt)
file(WRITE ${_script} "importFile \"${FOLDER}/other.flt\"\nlast = rootNode\nfor child in rootNode.children do last = child\nlast.name = \"other\"\n")
foreach(_database "" nowhere)
    execute_process(COMMAND ${KILNBATCH} --import ${FOLDER}/airport.flt --export ${_out}
                            --database "${_database}" ${_script}
                    RESULT_VARIABLE _result OUTPUT_VARIABLE _said ERROR_VARIABLE _said)
    if(_result EQUAL 0 OR NOT _said MATCHES "The scene has .*\\(airport.flt\\), \"other\" \\(other.flt\\)")
        message(FATAL_ERROR "kilnbatch --database \"${_database}\": ${_said}")
    endif()
endforeach()
foreach(_database other other.flt)
    file(REMOVE ${_out})
    execute_process(COMMAND ${KILNBATCH} --import ${FOLDER}/airport.flt --export ${_out}
                            --database ${_database} ${_script}
                    RESULT_VARIABLE _result OUTPUT_VARIABLE _said ERROR_VARIABLE _said)
    if(NOT _result EQUAL 0 OR NOT _said MATCHES "left out 1 other database")
        message(FATAL_ERROR "kilnbatch --database ${_database}: ${_said}")
    endif()
endforeach()
file(WRITE ${_script} "importFile \"${FOLDER}/other.flt\"\nexportFile \"${_out}\" false 0 \"other.flt\"\nfor child in rootNode.children do exportFile \"${_out}\" false 0 child\n")
execute_process(COMMAND ${KILNBATCH} --import ${FOLDER}/airport.flt ${_script}
                RESULT_VARIABLE _result OUTPUT_VARIABLE _said ERROR_VARIABLE _said)
if(NOT _result EQUAL 0)
    message(FATAL_ERROR "exportFile: ${_said}")
endif()
