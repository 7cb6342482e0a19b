# cmake -DFROM=<res> -DTO=<share/tavrinsonic> -DITEMS=<a;b;c> -P copy_resources.cmake
file(MAKE_DIRECTORY ${TO})
foreach(item IN LISTS ITEMS)
  if(IS_DIRECTORY ${FROM}/${item})
    file(COPY ${FROM}/${item} DESTINATION ${TO})
  elseif(EXISTS ${FROM}/${item})
    file(COPY ${FROM}/${item} DESTINATION ${TO})
  endif()
endforeach()
