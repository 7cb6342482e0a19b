# cmake -DINPUT=<english.txt> -DOUTPUT=<english_strings.cpp> -P GenerateStrings.cmake
# Turns the English string table into a sorted C++ array, compiled into the core.
file(STRINGS ${INPUT} lines ENCODING UTF-8)
set(rows "")
foreach(line IN LISTS lines)
  if(line MATCHES "^#" OR line STREQUAL "")
    continue()
  endif()
  if(NOT line MATCHES "^([0-9]+)\t(.*)$")
    message(FATAL_ERROR "${INPUT}: not '<id><TAB><text>': ${line}")
  endif()
  set(id ${CMAKE_MATCH_1})
  set(text "${CMAKE_MATCH_2}")
  # The table's own escapes are C escapes too; only quotes need escaping.
  string(REPLACE "\"" "\\\"" text "${text}")
  list(APPEND rows "    {${id}, \"${text}\"},")
endforeach()
list(SORT rows COMPARE NATURAL)
list(JOIN rows "\n" body)
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
