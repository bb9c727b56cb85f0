# Brings the staged files to the places and forms of Debian, before they are packed.
if(NOT CPACK_GENERATOR STREQUAL "DEB")
  return()
endif()

# The place of the licence is told, and not its text repeated; those of the packages in the page,
# which stands in the library, have no such place.
file(READ ${CMAKE_CURRENT_LIST_DIR}/../NOTICE notice)
string(STRIP "${notice}" notice)
string(REPLACE "\n\n" "\n.\n" notice "${notice}")
string(REPLACE "\n\n" "\n.\n" notice "${notice}")
string(REPLACE "\n" "\n " notice " ${notice}")
set(copyright "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/
Upstream-Name: vorl
Comment: The networks in data/ come from the publications named in data/README.md.

Files: *
Copyright: 2026 The developers of vorl
License: Apache-2.0
 On Debian systems, the text of the Apache License, version 2.0, is in
 /usr/share/common-licenses/Apache-2.0.

Files: view/dist/view.html
Copyright: 2026 The developers of vorl
 2010-2026 Mike Bostock
 2001 Robert Penner
License: Apache-2.0 and ISC and BSD-3-clause
${notice}
")
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(changes "vorl (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium

  * Release ${CPACK_PACKAGE_VERSION}; CHANGELOG.md of the package vorl has what is new.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  set(root ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr)
  string(TOUPPER ${component} id)
  set(docs ${root}/share/doc/${CPACK_DEBIAN_${id}_PACKAGE_NAME})
  file(REMOVE ${docs}/LICENSE)
  file(WRITE ${docs}/copyright "${copyright}")
  file(WRITE ${docs}/changelog "${changes}")
  file(GLOB pages ${root}/share/man/man1/*.1)
  execute_process(COMMAND gzip -9n ${docs}/changelog ${pages} COMMAND_ERROR_IS_FATAL ANY)
  if(EXISTS ${root}/share/zsh/site-functions)
    file(RENAME ${root}/share/zsh/site-functions ${root}/share/zsh/vendor-completions)
  endif()
endforeach()
