# Warnings every target of ours is built with. Third-party headers come in as
# system includes, so their warnings don't show.
add_library(ts_warnings INTERFACE)
target_compile_options(ts_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wcast-align
  -Woverloaded-virtual -Wnull-dereference -Wimplicit-fallthrough -Wformat=2
  $<$<BOOL:${TS_WERROR}>:-Werror>)
option(TS_WERROR "Treat warnings as errors" OFF)
