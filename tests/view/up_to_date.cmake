# Compares the sources of the page with those that it tells it was made of:
# cmake -DVIEW=view -P up_to_date.cmake
file(GLOB names RELATIVE ${VIEW} ${VIEW}/src/*)
list(SORT names)
foreach(name IN LISTS names ITEMS build.mjs package-lock.json)
  file(SHA256 ${VIEW}/${name} hash)
  string(APPEND hashes ${hash})
endforeach()
string(SHA256 wanted "${hashes}")
file(STRINGS ${VIEW}/dist/view.html made REGEX "^<!-- sources ")
if(NOT made STREQUAL "<!-- sources ${wanted} -->")
  message(FATAL_ERROR "view/dist/view.html isn't made of the sources in view/; ./dev page makes it")
endif()
