# orxscan_export_listed_only(TARGET LIST VERSION): the shared library TARGET exports the symbols that
# the file LIST names, under the symbol version VERSION, and nothing else: neither the private members
# of its classes nor what it instantiates from the C++ library.
function(orxscan_export_listed_only target list version)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list})
  file(STRINGS ${list} symbols REGEX "^[^#]")
  # The list is that of a 64-bit machine; where size_t is another type, so are the names.
  set(names ${symbols})
  if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    list(TRANSFORM names REPLACE "unsigned long" "unsigned int")
    list(APPEND names ${symbols})
    list(REMOVE_DUPLICATES names)
  endif()
  set(text "${version} {\n  global:\n    extern \"C++\" {\n")
  foreach(name IN LISTS names)
    string(APPEND text "      \"${name}\";\n")
  endforeach()
  string(APPEND text "    };\n  local:\n    *;\n};\n")
  set(script ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
  file(GENERATE OUTPUT ${script} CONTENT "${text}")
  target_link_options(${target} PRIVATE LINKER:--version-script=${script})
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${script})
endfunction()
