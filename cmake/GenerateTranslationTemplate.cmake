# cmake "-DNUMBERED=<english.txt>" "-DKEYED=<a.txt>|<b.txt>" -DOUTPUT=<tavrinsonic.ts> -P GenerateTranslationTemplate.cmake
# Writes the template a translator starts from: a Qt Linguist file with one
# id-based message per text of the program, its English text as the source
# and an empty, unfinished translation.
string(REPLACE "|" ";" keyed_inputs "${KEYED}")
include(${CMAKE_CURRENT_LIST_DIR}/TextTables.cmake)
string(ASCII 1 backslash_mark)
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

set(lines "")
foreach(input IN ITEMS ${NUMBERED} ${keyed_inputs})
  ts_read_text_table(${input} "[A-Za-z0-9.]+" lines)
endforeach()
foreach(line IN LISTS lines)
  string(REGEX MATCH "^([^\t]+)\t(.*)$" unused "${line}")
  set(id "${CMAKE_MATCH_1}")
  escape_for_xml("${CMAKE_MATCH_2}" source)
  string(APPEND messages "    <message id=\"${id}\">\n        <source>${source}</source>\n"
                         "        <translation type=\"unfinished\"></translation>\n    </message>\n")
endforeach()
ts_restore_marks(messages ";" "[" "]")
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
