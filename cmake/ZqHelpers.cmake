# Shared build settings of every target of the project.

# __FILE__ becomes the path relative to the repository root, so exceptions name
# "core/basepool/cbarray_serializer.h" whatever the checkout's location.
add_compile_options(-fmacro-prefix-map=${CMAKE_SOURCE_DIR}/=)
# A compiler cache with a base directory (CCACHE_BASEDIR) passes the sources relative to the build folder.
file(RELATIVE_PATH zq_source_from_build ${CMAKE_BINARY_DIR} ${CMAKE_SOURCE_DIR})
string(REGEX REPLACE "/$" "" zq_source_from_build "${zq_source_from_build}")
add_compile_options(-fmacro-prefix-map=${zq_source_from_build}/=)
add_compile_options(-Wall -Wextra -Wno-unused-parameter)
# A class object passed through C varargs (printf-style) is garbage at run time; make it an error.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_compile_options(-Werror=conditionally-supported)
endif()

if(ZQ_BUILD_FUZZ)
  # Instrument the libraries too, so that the fuzzers see coverage inside the code they feed.
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined)
  add_link_options(-fsanitize=address,undefined)
endif()

if(ZQ_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()

if(ZQ_SANITIZE_THREAD)
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
endif()

# zq_add_library(NAME DIR) builds the shared library NAME from every .cpp below DIR except the
# module's *_unittest.cpp files, which the module target gathers. The library's headers are
# included as <name/header.h> relative to the parent of DIR.
function(zq_add_library name)
  cmake_parse_arguments(ARG "" "" "LINK;PUBLIC_LINK" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  list(FILTER sources EXCLUDE REGEX "_unittest\\.cpp$")
  if(NOT sources)
    # A library of header templates only still gets its shared object, so users link it uniformly.
    set(stub ${CMAKE_CURRENT_BINARY_DIR}/${name}_library.cpp)
    file(WRITE ${stub} "// ${name} holds header templates only so far.\n")
    set(sources ${stub})
  endif()
  add_library(${name} SHARED ${sources})
  get_filename_component(parent ${CMAKE_CURRENT_SOURCE_DIR} DIRECTORY)
  target_include_directories(${name} PUBLIC ${parent})
  string(TOUPPER ${name} upper)
  target_compile_definitions(${name} PRIVATE ${upper}_BUILD)
  target_link_libraries(${name} PUBLIC ${ARG_PUBLIC_LINK} PRIVATE ${ARG_LINK})
endfunction()

# Every *_unittest.cpp under the library folders, for the module.
function(zq_collect_unittests out)
  file(GLOB_RECURSE found CONFIGURE_DEPENDS
       ${CMAKE_SOURCE_DIR}/core/*_unittest.cpp
       ${CMAKE_SOURCE_DIR}/service/*_unittest.cpp
       ${CMAKE_SOURCE_DIR}/testing/zqunittests/*_unittest.cpp)
  set(${out} ${found} PARENT_SCOPE)
endfunction()
