# Turns text files into a C++ source: cmake -DOUT=file.cpp -DHEADER=name.h "-DTEXTS=kName=file;…"
# -P embed_texts.cmake.  Each text becomes a constant of the namespace orxscan, and a second one,
# kNameSha256, its checksum in hexadecimal digits.
set(source "// Made by cmake/embed_texts.cmake.\n#include \"${HEADER}\"\n\nnamespace orxscan {\n")
foreach(entry IN LISTS TEXTS)
  string(REGEX MATCH "^([^=]+)=(.*)$" matched "${entry}")
  set(name ${CMAKE_MATCH_1})
  set(file ${CMAKE_MATCH_2})
  file(READ ${file} text)
  file(SHA256 ${file} checksum)
  string(APPEND source "\nconst char ${name}[] = R\"orxscan_text(${text})orxscan_text\";\n"
                       "const char ${name}Sha256[] = \"${checksum}\";\n")
endforeach()
file(WRITE ${OUT} "${source}\n}  // namespace orxscan\n")
