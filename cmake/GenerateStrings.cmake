# cmake -DINPUT=<english.txt> -DOUTPUT=<english_strings.cpp> -P GenerateStrings.cmake
# Turns the English string table into a sorted C++ array, compiled into the core.
include(${CMAKE_CURRENT_LIST_DIR}/TextTables.cmake)
set(lines "")
ts_read_text_table(${INPUT} "[0-9]+" lines)
set(rows "")
foreach(line IN LISTS lines)
  string(REGEX MATCH "^([^\t]+)\t(.*)$" unused "${line}")
  set(id ${CMAKE_MATCH_1})
  set(text "${CMAKE_MATCH_2}")
  # The table's own escapes are C escapes too; only quotes need escaping.
  string(REPLACE "\"" "\\\"" text "${text}")
  list(APPEND rows "    {${id}, \"${text}\"},")
endforeach()
list(SORT rows COMPARE NATURAL)
list(JOIN rows "\n" body)
ts_restore_marks(body ";" "[" "]")
file(WRITE ${OUTPUT}.new "// Generated from res/strings/english.txt; do not edit.
#include \"platform/texts.h\"

namespace platform {

const BuiltInTextRow kBuiltInEnglish[] = {
${body}
};
const std::size_t kBuiltInEnglishCount = sizeof kBuiltInEnglish / sizeof kBuiltInEnglish[0];

}  // namespace platform
")
file(COPY_FILE ${OUTPUT}.new ${OUTPUT} ONLY_IF_DIFFERENT)
file(REMOVE ${OUTPUT}.new)
