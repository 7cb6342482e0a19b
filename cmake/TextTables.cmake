# Shared by the generators of text tables: reading "<id><TAB><text>" lines.
# Lines starting with # and empty lines are skipped; a line of another shape
# stops the build. The characters that CMake's lists would take apart (";",
# "[" and "]") stand in the rows as the marks below; a caller puts them back
# as its output needs, once its rows are joined.
string(ASCII 2 ts_semicolon_mark)
string(ASCII 3 ts_open_mark)
string(ASCII 4 ts_close_mark)

# Appends to <result> one "<id><TAB><text>" row per line of <input>, where
# the id matches <id_pattern>.
function(ts_read_text_table input id_pattern result)
  file(READ ${input} content)
  string(REPLACE ";" "${ts_semicolon_mark}" content "${content}")
  string(REPLACE "[" "${ts_open_mark}" content "${content}")
  string(REPLACE "]" "${ts_close_mark}" content "${content}")
  string(REPLACE "\r" "" content "${content}")
  string(REPLACE "\n" ";" _ts_lines "${content}")
  set(_ts_rows ${${result}})
  foreach(line IN LISTS _ts_lines)
    if(line MATCHES "^#" OR line STREQUAL "")
      continue()
    endif()
    if(NOT line MATCHES "^(${id_pattern})\t(.*)$")
      message(FATAL_ERROR "${input}: not '<id><TAB><text>': ${line}")
    endif()
    list(APPEND _ts_rows "${line}")
  endforeach()
  set(${result} "${_ts_rows}" PARENT_SCOPE)
endfunction()

# Puts the characters back into <text_var>, written as <semicolon>, <open>
# and <close>.
function(ts_restore_marks text_var semicolon open close)
  set(text "${${text_var}}")
  string(REPLACE "${ts_semicolon_mark}" "${semicolon}" text "${text}")
  string(REPLACE "${ts_open_mark}" "${open}" text "${text}")
  string(REPLACE "${ts_close_mark}" "${close}" text "${text}")
  set(${text_var} "${text}" PARENT_SCOPE)
endfunction()
