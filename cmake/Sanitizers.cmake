# TS_SANITIZE=address builds everything with AddressSanitizer and
# UndefinedBehaviorSanitizer; TS_SANITIZE=thread with ThreadSanitizer. The flags
# go on every target, libraries included, so that instrumentation is whole.
if(TS_SANITIZE STREQUAL "address")
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer
                      -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
elseif(TS_SANITIZE STREQUAL "thread")
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
elseif(NOT TS_SANITIZE STREQUAL "")
  message(FATAL_ERROR "TS_SANITIZE must be empty, 'address' or 'thread'")
endif()

# libFuzzer targets: one executable per parser, built with clang in the
# sanitizer build. The core is compiled with coverage for the fuzzer then.
if(TS_BUILD_FUZZERS)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "TS_BUILD_FUZZERS needs clang")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# ts_add_fuzzer(<name> SOURCES <files...> [CORPUS <folder>])
# Builds a libFuzzer program in build/fuzz/. With a corpus folder, the suite
# runs the program once over every file in it (label unit), so inputs that
# once broke a parser stay fixed; fuzzing for longer is done by hand:
#   build-asan/fuzz/<name> -max_total_time=600 <corpus folder>
function(ts_add_fuzzer name)
  if(NOT TS_BUILD_FUZZERS)
    return()
  endif()
  cmake_parse_arguments(ARG "" "CORPUS" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  target_link_libraries(${name} PRIVATE tavrinsonic_core ${ARG_LIBRARIES} ts_warnings)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/fuzz)
  if(ARG_CORPUS)
    add_test(NAME fuzz.${name}.corpus COMMAND ${name} -runs=0 ${ARG_CORPUS})
    set_tests_properties(fuzz.${name}.corpus PROPERTIES LABELS unit)
  endif()
endfunction()
