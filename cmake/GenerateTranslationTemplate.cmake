# cmake "-DNUMBERED=<english.txt>" "-DKEYED=<a.txt>|<b.txt>" -DOUTPUT=<tavrinsonic.ts> -P GenerateTranslationTemplate.cmake
# Writes the template a translator starts from: a Qt Linguist file with one
# id-based message per text of the program, its English text as the source
# and an empty, unfinished translation.
string(REPLACE "|" ";" keyed_inputs "${KEYED}")
# Stand-ins for characters that CMake's lists would take apart.
string(ASCII 1 backslash_mark)
string(ASCII 2 semicolon_mark)
string(ASCII 3 open_mark)
string(ASCII 4 close_mark)
set(messages "")

function(escape_for_xml text result)
  # The tables' escapes become the characters they stand for.
  string(REPLACE "\\\\" "${backslash_mark}" text "${text}")
  string(REPLACE "\\n" "\n" text "${text}")
  string(REPLACE "\\r" "&#13;" text "${text}")
  string(REPLACE "\\t" "\t" text "${text}")
  string(REPLACE "\\\"" "\"" text "${text}")
  string(REPLACE "&" "&amp;" text "${text}")
  string(REPLACE "&amp;#13;" "&#13;" text "${text}")
  string(REPLACE "<" "&lt;" text "${text}")
  string(REPLACE ">" "&gt;" text "${text}")
  string(REPLACE "${backslash_mark}" "\\" text "${text}")
  set(${result} "${text}" PARENT_SCOPE)
endfunction()

foreach(input IN ITEMS ${NUMBERED} ${keyed_inputs})
  file(READ ${input} content)
  string(REPLACE ";" "${semicolon_mark}" content "${content}")
  string(REPLACE "[" "${open_mark}" content "${content}")
  string(REPLACE "]" "${close_mark}" content "${content}")
  string(REPLACE "\r" "" content "${content}")
  string(REPLACE "\n" ";" lines "${content}")
  foreach(line IN LISTS lines)
    if(line MATCHES "^#" OR line STREQUAL "")
      continue()
    endif()
    if(NOT line MATCHES "^([A-Za-z0-9.]+)\t(.*)$")
      message(FATAL_ERROR "${input}: not '<id><TAB><text>': ${line}")
    endif()
    set(id "${CMAKE_MATCH_1}")
    escape_for_xml("${CMAKE_MATCH_2}" source)
    string(APPEND messages "    <message id=\"${id}\">\n        <source>${source}</source>\n"
                           "        <translation type=\"unfinished\"></translation>\n    </message>\n")
  endforeach()
endforeach()
string(REPLACE "${semicolon_mark}" ";" messages "${messages}")
string(REPLACE "${open_mark}" "[" messages "${messages}")
string(REPLACE "${close_mark}" "]" messages "${messages}")
file(WRITE ${OUTPUT}.new "<?xml version=\"1.0\" encoding=\"utf-8\"?>
<!DOCTYPE TS>
<!-- Every text of Tavrinsonic, in English: the starting point of a language
     pack. See docs/translating.md. Generated; do not edit. -->
<TS version=\"2.1\">
<context>
    <name></name>
${messages}</context>
</TS>
")
file(COPY_FILE ${OUTPUT}.new ${OUTPUT} ONLY_IF_DIFFERENT)
file(REMOVE ${OUTPUT}.new)
