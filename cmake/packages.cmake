# The packages of Debian, one for each component.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vorl)
set(CPACK_PACKAGE_CONTACT "The developers of vorl <developers@vorl.example>")
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian.cmake)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(same_version "libvorl0 (= ${PROJECT_VERSION})")

# vorl_package(COMPONENT NAME SECTION SUMMARY WORDS): the words end the description.
macro(vorl_package component name section summary words)
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  string(TOUPPER ${component} id)
  set(CPACK_DEBIAN_${id}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${id}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${id}_DESCRIPTION "overlapping clustering of networks, ${summary}
vorl clusters a large network into a hierarchy of overlapping clusters. The
resolution is found by itself, and the result is the same on every run and
machine.
.
${words}")
endmacro()

vorl_package(library libvorl0 libs "library" "This package has the shared library.")
# Loaded when a compressed network or one in XML is read, so not found among the libraries that are linked.
set(CPACK_DEBIAN_LIBRARY_PACKAGE_RECOMMENDS "zlib1g, libzstd1, libexpat1")
file(WRITE ${PROJECT_BINARY_DIR}/debian/shlibs "libvorl 0 ${same_version}\n")
file(WRITE ${PROJECT_BINARY_DIR}/debian/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/debian/shlibs
                                               ${PROJECT_BINARY_DIR}/debian/triggers)

vorl_package(headers libvorl-dev libdevel "development files"
             "This package has the headers, and what build systems want.")
set(CPACK_DEBIAN_HEADERS_PACKAGE_DEPENDS ${same_version})

vorl_package(program vorl science "program"
             "This package has the program vorl, its manual page and the guide.")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS ${same_version})

if(VORL_BUILD_JAVA)
  vorl_package(java libvorl-java java "Java classes"
               "This package has the classes of Java and their native library.")
  set(CPACK_DEBIAN_JAVA_PACKAGE_DEPENDS ${same_version})
  set(CPACK_DEBIAN_JAVA_PACKAGE_RECOMMENDS "default-jre-headless (>= 2:1.17)")
endif()
include(CPack)
