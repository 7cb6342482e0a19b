# cmake "-DINPUTS=<a.txt>|<b.txt>" -DOUTPUT=<file.cpp> -DHEADER=<header declaring KeyedTextRow and the table>
#       -DNAMESPACE=<ns> -DTABLE=<name> -P GenerateKeyedTexts.cmake
# Turns tables of "<key><TAB><text>" lines into one C++ array sorted by key.
# Lines starting with # and empty lines are skipped. The texts' escapes (\n, \t,
# \\, \") are C escapes; quotes, ";" "[" and "]" are written as octal escapes.
include(${CMAKE_CURRENT_LIST_DIR}/TextTables.cmake)
string(REPLACE "|" ";" inputs "${INPUTS}")
set(lines "")
foreach(input IN LISTS inputs)
  ts_read_text_table(${input} "[a-z]+\\.[A-Za-z0-9.]+" lines)
endforeach()
set(rows "")
foreach(line IN LISTS lines)
  string(REGEX MATCH "^([^\t]+)\t(.*)$" unused "${line}")
  set(key "${CMAKE_MATCH_1}")
  set(text "${CMAKE_MATCH_2}")
  string(REPLACE "\\\"" "\\042" text "${text}")
  string(REPLACE "\"" "\\042" text "${text}")
  list(APPEND rows "    {\"${key}\", \"${text}\"},")
endforeach()
list(SORT rows)
list(JOIN rows "\n" body)
ts_restore_marks(body "\\073" "\\133" "\\135")
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
