# cmake -DFROM=<res> -DTO=<share/tavrinsonic> -DITEMS=<a;b;c> -P copy_resources.cmake
file(MAKE_DIRECTORY ${TO})
# -D values of a script are cache entries, which foreach(IN LISTS) doesn't see.
set(items ${ITEMS})
foreach(item IN LISTS items)
  if(IS_DIRECTORY ${FROM}/${item})
    file(COPY ${FROM}/${item} DESTINATION ${TO})
  elseif(EXISTS ${FROM}/${item})
    file(COPY ${FROM}/${item} DESTINATION ${TO})
  endif()
endforeach()
