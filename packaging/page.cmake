# Makes a page of a document: cmake -DCMARK=cmark-gfm -DIN=FILE.md -DOUT=FILE.html -DLANGUAGE=en -DTEMPLATE=FILE -P page.cmake
# Links to other documents lead to their pages.
execute_process(COMMAND ${CMARK} --extension table --unsafe ${IN}
                OUTPUT_VARIABLE body COMMAND_ERROR_IS_FATAL ANY)
# The program opens the guide at a section.
string(REGEX REPLACE "<h2>([0-9]+)\\. " "<h2 id=\"section-\\1\">\\1. " body "${body}")
string(REGEX REPLACE "href=\"([A-Za-z0-9.-]+)\\.md([#\"])" "href=\"\\1.html\\2" body "${body}")
string(REGEX MATCH "<h1>([^<]*)</h1>" _ "${body}")
set(title "${CMAKE_MATCH_1}")
configure_file(${TEMPLATE} ${OUT} @ONLY)
