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

# libFuzzer targets: one executable per parser, built only with clang.
function(ts_add_fuzzer name)
  if(NOT TS_BUILD_FUZZERS)
    return()
  endif()
  add_executable(${name} ${ARGN})
  target_compile_options(${name} PRIVATE -fsanitize=fuzzer)
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  target_link_libraries(${name} PRIVATE tavrinsonic_core ts_warnings)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/fuzz)
endfunction()
