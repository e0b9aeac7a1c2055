# Turns files into a C++ source: cmake -DOUT=file.cpp -DHEADER=name.h -DNAMESPACE=name
# "-DFILES=kName=file;…" -P embed_bytes.cmake.  Each file becomes a std::string_view.
set(source "// Made by cmake/embed_bytes.cmake.\n#include \"${HEADER}\"\n\nnamespace ${NAMESPACE} {\n")
foreach(entry IN LISTS FILES)
  string(REGEX MATCH "^([^=]+)=(.*)$" matched "${entry}")
  set(name ${CMAKE_MATCH_1})
  file(READ ${CMAKE_MATCH_2} digits HEX)
  string(REGEX REPLACE "(..)" "\\\\x\\1" bytes "${digits}")
  string(LENGTH "${digits}" length)
  math(EXPR length "${length} / 2")
  string(APPEND source "\nconst std::string_view ${name}(\"${bytes}\", ${length});\n")
endforeach()
file(WRITE ${OUT} "${source}\n}  // namespace ${NAMESPACE}\n")
