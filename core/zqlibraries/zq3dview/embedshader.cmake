# cmake -DINPUT=shader.frag -DOUTPUT=shader.frag.inc -P embedshader.cmake
# Writes the shader's text as one C++ raw string literal.
file(READ ${INPUT} text)
string(FIND "${text}" ")zqglsl\"" clash)
if(NOT clash EQUAL -1)
  message(FATAL_ERROR "${INPUT} contains the raw string delimiter )zqglsl\"")
endif()
file(WRITE ${OUTPUT}.tmp "R\"zqglsl(${text})zqglsl\"\n")
file(RENAME ${OUTPUT}.tmp ${OUTPUT})
