# Target header_check: each header of ours as the only include of a source, so
# that none leans on what its includer happened to include before. The first
# include of a header is read with nothing before it too, so it is checked there.
file(GLOB_RECURSE headers RELATIVE ${PROJECT_SOURCE_DIR} CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/qtundo/*.h ${PROJECT_SOURCE_DIR}/zvwidgets/*.h
  ${PROJECT_SOURCE_DIR}/app/*.h)
set(checked ${headers})
foreach(header IN LISTS headers)
  file(STRINGS ${PROJECT_SOURCE_DIR}/${header} first REGEX "^#include" LIMIT_COUNT 1)
  if(first MATCHES "\"(.*)\"")
    list(REMOVE_ITEM checked ${CMAKE_MATCH_1})
  endif()
endforeach()
set(units)
foreach(header IN LISTS checked)
  string(REPLACE "/" "_" unit ${header})
  set(unit ${PROJECT_BINARY_DIR}/header_check/${unit}.cpp)
  file(CONFIGURE OUTPUT ${unit} CONTENT "#include \"${header}\" // IWYU pragma: keep\n")
  list(APPEND units ${unit})
endforeach()
add_library(header_check OBJECT EXCLUDE_FROM_ALL ${units})
target_link_libraries(header_check PRIVATE build_options veskapp)
set_target_properties(header_check PROPERTIES AUTOMOC OFF EXPORT_COMPILE_COMMANDS OFF)
target_compile_options(header_check PRIVATE -g0 -fsyntax-only)
