# cmake "-DINPUTS=<a.txt>|<b.txt>" -DOUTPUT=<file.cpp> -DHEADER=<header declaring KeyedTextRow and the table>
#       -DNAMESPACE=<ns> -DTABLE=<name> -P GenerateKeyedTexts.cmake
# Turns tables of "<key><TAB><text>" lines into one C++ array sorted by key.
# Lines starting with # and empty lines are skipped. The texts' escapes (\n, \t,
# \\, \") are C escapes; ";" "[" and "]" are written as octal escapes here, so
# that CMake's list handling can't split or merge lines.
string(REPLACE "|" ";" inputs "${INPUTS}")
set(rows "")
foreach(input IN LISTS inputs)
  file(READ ${input} content)
  string(REPLACE "\\\"" "\\042" content "${content}")
  string(REPLACE "\"" "\\042" content "${content}")
  string(REPLACE ";" "\\073" content "${content}")
  string(REPLACE "[" "\\133" content "${content}")
  string(REPLACE "]" "\\135" content "${content}")
  string(REPLACE "\r" "" content "${content}")
  string(REPLACE "\n" ";" lines "${content}")
  foreach(line IN LISTS lines)
    if(line MATCHES "^#" OR line STREQUAL "")
      continue()
    endif()
    if(NOT line MATCHES "^([a-z]+\\.[A-Za-z0-9.]+)\t(.*)$")
      message(FATAL_ERROR "${input}: not '<key><TAB><text>': ${line}")
    endif()
    list(APPEND rows "    {\"${CMAKE_MATCH_1}\", \"${CMAKE_MATCH_2}\"},")
  endforeach()
endforeach()
list(SORT rows)
list(JOIN rows "\n" body)
file(WRITE ${OUTPUT}.new "// Generated from res/strings; do not edit.
#include \"${HEADER}\"

namespace ${NAMESPACE} {

const KeyedTextRow ${TABLE}[] = {
${body}
};
const std::size_t ${TABLE}Count = sizeof ${TABLE} / sizeof ${TABLE}[0];

}  // namespace ${NAMESPACE}
")
file(COPY_FILE ${OUTPUT}.new ${OUTPUT} ONLY_IF_DIFFERENT)
file(REMOVE ${OUTPUT}.new)
