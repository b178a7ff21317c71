# A layer is a static library whose users see its public headers as "<folder>/Name.h"
# and nothing else: each layer gets an include root of its own in the build tree,
# holding links to its public headers only. A lower layer thus cannot include an upper
# one, and no layer reaches another's private headers (included by their plain name
# from their own folder).
function(cuebridge_layer name)
  set(root ${CMAKE_BINARY_DIR}/include/${name})
  file(REMOVE_RECURSE ${root}) # headers made private since the last configure
  file(MAKE_DIRECTORY ${root})
  add_library(cuebridge_${name} STATIC)
  add_library(Cuebridge::${name} ALIAS cuebridge_${name})
  target_include_directories(cuebridge_${name} PUBLIC ${root})
  target_compile_definitions(cuebridge_${name} PRIVATE QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII
                                                       QT_USE_QSTRINGBUILDER)
  cuebridge_warnings(cuebridge_${name})
endfunction()

# Adds the files of one source folder to a layer: PUBLIC headers are published under
# the folder's name, SOURCES (private headers among them) are compiled only.
function(cuebridge_layer_sources name)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "PUBLIC;SOURCES")
  get_filename_component(folder ${CMAKE_CURRENT_SOURCE_DIR} NAME)
  set(root ${CMAKE_BINARY_DIR}/include/${name}/${folder})
  file(MAKE_DIRECTORY ${root})
  foreach(header IN LISTS ARG_PUBLIC)
    file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR}/${header} ${root}/${header} SYMBOLIC)
  endforeach()
  target_sources(cuebridge_${name} PRIVATE ${ARG_PUBLIC} ${ARG_SOURCES})
endfunction()
